#include "zentavo/inbox/InboxItem.h"

#include "zentavo/foundation/JSONWriter.h"

namespace zentavo {

namespace {

/// Every field with its key, in the order in which they are read: one list for both ways.
template <class Item, class Visitor>
void visitFields(Item& item, Visitor&& field) {
    field("item_id", item.itemId);
    field("last_updated", item.lastUpdated);
    field("heading", item.heading);
    field("date_created", item.dateCreated);
    field("catalog_ids", item.catalogId);
    field("launch_url", item.lauchUrl);
    field("lookup_type", item.lookupType);
    field("template_id", item.templateId);
    field("content", item.content);
    field("app_url", item.appUrl);
    field("status", item.status);
    field("image_url", item.imageUrl);
    field("button_app_url_1", item.buttonAppUrl1);
    field("button_app_url_2", item.buttonAppUrl2);
    field("button_launch_url_1", item.buttonLaunchUrl1);
    field("button_launch_url_2", item.buttonLaunchUrl2);
    field("button_label_1", item.buttonLabel1);
    field("button_label_2", item.buttonLabel2);
    field("tracking_url", item.trackingUrl);
}

class Reader {
public:
    explicit Reader(KeyedDecoder& decoder) : decoder_(decoder) {}

    void operator()(const char* key, std::string& field) { field = decoder_.string(key); }
    void operator()(const char* key, std::int64_t& field) { field = decoder_.integer(key); }
    void operator()(const char* key, std::vector<std::string>& field) { field = decoder_.stringList(key); }
    void operator()(const char* key, std::optional<std::string>& field) { field = decoder_.optionalString(key); }
    void operator()(const char* key, std::optional<URL>& field) {
        if (const auto text = decoder_.optionalString(key)) {
            field = URL::parse(*text);
            if (!field) {
                decoder_.remark(key, "no URL, and therefore absent");
            }
        }
    }

private:
    KeyedDecoder& decoder_;
};

class Writer {
public:
    explicit Writer(JSONWriter& writer) : writer_(writer) {}

    void operator()(const char* key, const std::string& field) { member(key, field); }
    void operator()(const char* key, std::int64_t field) { member(key, field); }
    void operator()(const char* key, const std::vector<std::string>& field) {
        writer_.key(key);
        writer_.beginList();
        for (const std::string& text : field) {
            writer_.value(text);
        }
        writer_.endList();
    }
    void operator()(const char* key, const std::optional<std::string>& field) {
        if (field) {
            member(key, *field);
        }
    }
    void operator()(const char* key, const std::optional<URL>& field) {
        if (field) {
            member(key, field->text());
        }
    }

private:
    template <class Content>
    void member(const char* key, const Content& content) {
        writer_.key(key);
        writer_.value(content);
    }

    JSONWriter& writer_;
};

} // namespace

InboxItem InboxItem::decode(KeyedDecoder& decoder) {
    InboxItem item;
    visitFields(item, Reader(decoder));
    return item;
}

std::optional<std::string> InboxItem::jsonString() const {
    JSONWriter writer;
    writer.beginMap();
    visitFields(*this, Writer(writer));
    writer.endMap();
    auto text = writer.finish();
    return text ? std::optional(*std::move(text)) : std::nullopt;
}

} // namespace zentavo
