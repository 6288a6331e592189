#include "zentavo/inbox/InboxItem.h"

#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/JSONWriter.h"

namespace zentavo {

namespace {

/// Every field with its key, in the order in which they are read: one list for both ways.
template <class Item, class Visitor>
void visitFields(Item& item, Visitor&& visit) {
    auto key = InboxItem::keys.begin();
    const auto fields = [&](auto&... field) { (visit(*key++, field), ...); };
    fields(item.itemId, item.lastUpdated, item.heading, item.dateCreated, item.catalogId, item.lauchUrl,
           item.lookupType, item.templateId, item.content, item.appUrl, item.status, item.imageUrl, item.buttonAppUrl1,
           item.buttonAppUrl2, item.buttonLaunchUrl1, item.buttonLaunchUrl2, item.buttonLabel1, item.buttonLabel2,
           item.trackingUrl);
}

class Reader {
public:
    explicit Reader(KeyedDecoder& decoder) : decoder_(decoder) {}

    void operator()(std::string_view key, std::string& field) { field = decoder_.string(key); }
    void operator()(std::string_view key, std::int64_t& field) { field = decoder_.integer(key); }
    void operator()(std::string_view key, std::vector<std::string>& field) { field = decoder_.stringList(key); }
    void operator()(std::string_view key, std::optional<std::string>& field) { field = decoder_.optionalString(key); }
    void operator()(std::string_view key, std::optional<URL>& field) {
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

    void operator()(std::string_view key, const std::string& field) { member(key, field); }
    void operator()(std::string_view key, std::int64_t field) { member(key, field); }
    void operator()(std::string_view key, const std::vector<std::string>& field) {
        writer_.key(key);
        writer_.beginList();
        for (const std::string& text : field) {
            writer_.value(text);
        }
        writer_.endList();
    }
    void operator()(std::string_view key, const std::optional<std::string>& field) {
        if (field) {
            member(key, *field);
        }
    }
    void operator()(std::string_view key, const std::optional<URL>& field) {
        if (field) {
            member(key, field->text());
        }
    }

private:
    template <class Content>
    void member(std::string_view key, const Content& content) {
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

std::optional<std::string> InboxItem::jsonString(TextEncoding encoding) const {
    JSONWriter writer;
    writer.beginMap();
    visitFields(*this, Writer(writer));
    writer.endMap();
    return json::textIn(encoding, writer.finish());
}

} // namespace zentavo
