// Opening URLs through the desktop, which here is what this test writes into the user's folders.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/gtk/GuiTest.h"

namespace zentavo::tests {
namespace {

using ::testing::HasSubstr;
using ::testing::SizeIs;

using ApplicationTest = GuiTest;

TEST_F(ApplicationTest, OpensWhatTheUserHasAProgramForAndNothingElse) {
    const std::filesystem::path data = std::getenv("XDG_DATA_HOME");
    const std::filesystem::path config = std::getenv("XDG_CONFIG_HOME");
    std::filesystem::create_directories(data / "applications");
    std::filesystem::create_directories(config);
    const auto opened = data / "opened";
    std::ofstream(data / "shop.sh") << "#!/bin/sh\nprintf %s \"$1\" > " << opened.string() << ".part\nmv "
                                    << opened.string() << ".part " << opened.string() << '\n';
    std::ofstream(data / "applications/shop.desktop")
        << "[Desktop Entry]\nType=Application\nName=Shop\nExec=/bin/sh " << (data / "shop.sh").string()
        << " %u\nMimeType=x-scheme-handler/shop;\n";
    std::ofstream(config / "mimeapps.list") << "[Default Applications]\nx-scheme-handler/shop=shop.desktop\n";

    auto& application = *interface()->application;
    const std::string url = "shop://sale?a=1&b='$(true)'";
    application.open(URL::parse(url).value());
    ASSERT_TRUE(until([&] { return std::filesystem::exists(opened); }));
    std::ifstream file(opened);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), URL::parse(url)->text());
    EXPECT_THAT(memory.systemLog->entries(), SizeIs(0));

    application.open(URL::parse("file:///etc/passwd").value());
    application.open(URL::parse("/etc/passwd").value());
    EXPECT_THAT(memory.systemLog->entries(), SizeIs(2)) << "a page may have named it";
    application.open(URL::parse("nobody-has-this:x").value());
    ASSERT_TRUE(until([&] { return memory.systemLog->entries().size() == 3; }));
    EXPECT_THAT(memory.systemLog->entries().back().message, HasSubstr("nobody-has-this:x"));
}

} // namespace
} // namespace zentavo::tests
