#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "devserver/SeedFiles.h"
#include "zentavo/foundation/Value.h"

namespace zentavo::devserver {

/// An in-app message that is due for some events. Its texts hold placeholders, see `filled`.
struct Campaign {
    /// That of its file.
    std::string name;
    std::string description;
    /// Names of events; "*" for any, where the catch-all is switched on.
    std::vector<std::string> events;
    /// As the delivery service offers it, its "javascript" included.
    Map webContent;
    /// "data" of the two media-template answers; none where the campaign is not hand-written.
    std::optional<Map> templateInfo;
    std::optional<std::string> html;
    /// What the host gets that shows it itself; none for nothing.
    std::optional<Value> media;

    std::int64_t id(std::string_view key) const { return *webContent.find(key)->exactInt64(); }
    std::int64_t story() const { return id("storyId"); }
    const std::string& text(std::string_view key) const { return *webContent.find(key)->asString(); }
    bool isHandWritten() const { return text("designMode") == "CODE_MODE"; }
    /// The SDK leaves these types out.
    bool isNeverShown() const { return text("template") == "slide_in" || text("template") == "inline"; }
    bool isFor(std::string_view event, bool catchAll) const;
};

/// The campaigns of a folder, read once and never changed: each a JSON file, with the pages and scripts that it names
/// beside it.
class Campaigns {
public:
    /// From the files of `folder`, or the built-in ones when it is empty text. The error names the file.
    static Result<Campaigns> read(const std::string& folder);

    const std::vector<Campaign>& all() const noexcept { return all_; }
    /// Null when there is none.
    const Campaign* find(std::int64_t story) const;

private:
    std::vector<Campaign> all_;
};

std::span<const EmbeddedFile> builtInCampaigns() noexcept;

/// Where an offered campaign is reported to.
struct Tracking {
    /// "http://127.0.0.1:8787"
    std::string server;
    /// Number of the delivery that offered it; 0 for none.
    std::uint64_t delivery = 0;
    std::int64_t story = 0;

    /// "http://…/track/click?…", asking for a pixel.
    std::string url(std::string_view what) const;
};
/// `text` with {{server}}, {{story}}, {{impression}}, {{viewable}} and {{click}} filled in.
std::string filled(std::string_view text, const Tracking& tracking);

} // namespace zentavo::devserver
