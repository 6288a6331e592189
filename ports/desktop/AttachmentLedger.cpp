#include "ports/desktop/AttachmentLedger.h"

#include <optional>
#include <utility>
#include <vector>

#include "ports/desktop/StoredRecords.h"

namespace zentavo::desktop {

namespace {

constexpr const char* key = "ZentavoAttachmentFiles";

struct Entry {
    std::string path;
    std::string process;
};

std::vector<Entry> read(const std::optional<Value>& stored) {
    return readRecords(stored, AttachmentLedger::maximumCount, [](KeyedDecoder& decoder) {
        return Entry{decoder.string("path"), decoder.string("process")};
    });
}

std::optional<Value> write(const std::vector<Entry>& entries) {
    return writeRecords(entries, [](const Entry& each) { return Map{{"path", each.path}, {"process", each.process}}; });
}

} // namespace

Result<std::string> AttachmentLedger::write(std::string_view folder, std::string_view name, std::string_view bytes) {
    auto path = files_->write(folder, name, bytes);
    if (path) {
        suite_->update(key, [entry = Entry{*path, process_}](const std::optional<Value>& stored) {
            auto entries = read(stored);
            addRecord(entries, entry, maximumCount);
            return desktop::write(entries);
        });
    }
    return path;
}

Result<platform::NotificationAttachment> AttachmentLedger::attach(std::string identifier, const std::string& path) {
    return files_->attach(std::move(identifier), path);
}

void AttachmentLedger::remove(const std::string& path) {
    files_->remove(path);
    strikeOut({path});
}

void AttachmentLedger::sweep(const std::set<std::string>& kept) {
    std::set<std::string> left;
    for (const Entry& each : read(suite_->object(key))) {
        if (each.process != process_ && !kept.contains(each.path)) {
            files_->remove(each.path);
            left.insert(each.path);
        }
    }
    if (!left.empty()) {
        strikeOut(left);
    }
}

void AttachmentLedger::strikeOut(const std::set<std::string>& paths) {
    suite_->update(key, [paths](const std::optional<Value>& stored) {
        auto entries = read(stored);
        std::erase_if(entries, [&](const Entry& each) { return paths.contains(each.path); });
        return desktop::write(entries);
    });
}

} // namespace zentavo::desktop
