#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "zentavo/foundation/URL.h"

namespace {

using zentavo::QueryItem;
using zentavo::URL;

URL parsed(std::string_view text) {
    const auto url = URL::parse(text);
    EXPECT_TRUE(url) << text;
    return url ? *url : *URL::parse("broken-test");
}

TEST(URL, TakesReferencesApart) {
    const URL full = parsed("HTTPS://me:pw@Shop.example:8443/a//b.html?x=1?&y#top?");
    EXPECT_EQ(full.text(), "https://me:pw@Shop.example:8443/a//b.html?x=1?&y#top?");
    EXPECT_EQ(full.scheme(), "https");
    EXPECT_EQ(full.userInfo(), "me:pw");
    EXPECT_EQ(full.host(), "Shop.example");
    EXPECT_EQ(full.port(), 8443);
    EXPECT_EQ(full.path(), "/a//b.html");
    EXPECT_EQ(full.query(), "x=1?&y");
    EXPECT_EQ(full.fragment(), "top?");
    EXPECT_TRUE(full.isHTTP());

    const URL literal = parsed("http://[2001:db8::7]:80?#");
    EXPECT_EQ(literal.host(), "2001:db8::7");
    EXPECT_EQ(literal.port(), 80);
    EXPECT_EQ(literal.path(), "");
    EXPECT_EQ(literal.query(), "");
    EXPECT_EQ(literal.fragment(), "");

    const URL relative = parsed("a/b:c?q");
    EXPECT_EQ(relative.scheme(), "");
    EXPECT_EQ(relative.host(), "");
    EXPECT_EQ(relative.port(), std::nullopt);
    EXPECT_EQ(relative.path(), "a/b:c");
    EXPECT_EQ(relative.query(), "q");
    EXPECT_EQ(relative.fragment(), std::nullopt);

    EXPECT_EQ(parsed("//cdn.example/x").host(), "cdn.example");
    EXPECT_EQ(parsed("mailto:a@b.example").path(), "a@b.example");
    EXPECT_EQ(parsed("shop-app+1.0://open").host(), "open");
    EXPECT_EQ(parsed("file:///etc/x").path(), "/etc/x");
    EXPECT_EQ(parsed("http://h:/").port(), std::nullopt);
}

TEST(URL, EncodesWhatTheRFCDoesNotKnow) {
    const std::pair<const char*, const char*> cases[] = {
        {"http://h/a b", "http://h/a%20b"},
        {"http://h/ü{}|\\^[]`<>\"", "http://h/%C3%BC%7B%7D%7C%5C%5E%5B%5D%60%3C%3E%22"},
        {"http://h/%7b%7B", "http://h/%7b%7B"},
        {"http://h/?a[]=ü&b=50%&c=%2", "http://h/?a%5B%5D=%C3%BC&b=50%25&c=%252"},
        {"http://h/#a#b", "http://h/#a%23b"},
        {"http://bücher.example/", "http://b%C3%BCcher.example/"},
        {"http://a@b@c.example/", "http://a%40b@c.example/"},
        {"/p/{id}", "/p/%7Bid%7D"},
    };
    for (const auto& [given, text] : cases) {
        EXPECT_EQ(parsed(given).text(), text);
        EXPECT_EQ(parsed(text).text(), text) << "must not change again";
    }
}

TEST(URL, RefusesWhatIsNone) {
    const std::string_view cases[] = {
        "",
        ":",
        ":a",
        "1a:b",
        "a b:c",
        "http:",
        "http://",
        "http:///p",
        "http:/p",
        "http://:80/",
        "//u@/p",
        "//:1",
        // Escapes, controls, encodings.
        "http://h/%",
        "http://h/%2",
        "http://h/%zz",
        "http://h/#%",
        "http://u%@h/",
        "http://h%/",
        "a\nb",
        "a\tb",
        "a\x7f",
        std::string_view("a\0b", 3),
        "http://h/\xff",
        "http://h/\xed\xa0\x80",
        "http://h/\xc0\xaf",
        // Hosts that another reader would end elsewhere.
        "http://a b/",
        "http://a\\b/",
        "http://a%2fb/",
        "http://a%00b/",
        "http://a%20/",
        "http://a[b/",
        "http://a<b/",
        // Ports.
        "http://h:65536/",
        "http://h:8x/",
        "http://h:-1/",
        "http://h:80:80/",
        "http://[::1]80/",
        "http://h: 80/",
    };
    for (const std::string_view text : cases) {
        EXPECT_FALSE(URL::parse(text)) << text;
    }
    EXPECT_TRUE(URL::parse("/" + std::string((64U << 10U) - 1, 'a')));
    EXPECT_FALSE(URL::parse("/" + std::string(64U << 10U, 'a')));
    EXPECT_FALSE(URL::parse("/" + std::string(30U << 10U, ' '))) << "too long once encoded";
}

TEST(URL, KnowsIPv6Literals) {
    for (const char* host : {"::", "::1", "1::", "1:2:3:4:5:6:7:8", "1:2:3:4:5:6:7::", "::2:3:4:5:6:7:8", "fe80::A:b",
                             "::ffff:1.2.3.4", "1:2:3:4:5:6:1.2.3.4", "::1.2.3.4", "1::255.255.255.255"}) {
        EXPECT_EQ(parsed("http://[" + std::string(host) + "]/").host(), host);
    }
    for (const char* host : {"",
                             ":",
                             ":::",
                             "1",
                             "1:2:3:4:5:6:7",
                             "1:2:3:4:5:6:7:8:9",
                             "1:2:3:4:5:6:7:8::",
                             "1::2::3",
                             "12345::",
                             "g::",
                             ":1::",
                             "1::2:",
                             "::1.2.3",
                             "::1.2.3.256",
                             "::1.2.3.4.5",
                             "::01.2.3.4",
                             "1.2.3.4::",
                             "1:2:3:4:5:6:7:1.2.3.4",
                             "1.2.3.4:1::",
                             "::1%eth0",
                             "v1.a"}) {
        EXPECT_FALSE(URL::parse("http://[" + std::string(host) + "]/")) << host;
    }
    EXPECT_FALSE(URL::parse("http://[::1/"));
}

TEST(URL, QueryItems) {
    const std::vector<QueryItem> items = parsed("/p?a=1&b=x=y&c&=&&d=%26%3D%25+e&f=%C3%BC&g=%ff").queryItems();
    const std::vector<QueryItem> expected{{"a", "1"}, {"b", "x=y"},   {"c", {}},  {"", ""},
                                          {"", {}},   {"d", "&=%+e"}, {"f", "ü"}, {"g", "%ff"}};
    EXPECT_EQ(items, expected);
    EXPECT_TRUE(parsed("/p#?a=1").queryItems().empty());
}

TEST(URL, ReplacesTheQuery) {
    const URL url = parsed("http://h/a?old=1#f");
    const std::vector<QueryItem> items{{"z", "+:/?@"}, {"a b", "&=%# ü\n"}, {"a b", ""}, {"n", {}}};
    const URL replaced = url.withQueryItems(items);
    EXPECT_EQ(replaced.text(), "http://h/a?z=+:/?@&a%20b=%26%3D%25%23%20%C3%BC%0A&a%20b=&n#f");
    EXPECT_EQ(replaced.queryItems(), items);
    EXPECT_EQ(replaced.fragment(), "f");
    EXPECT_EQ(replaced, parsed(replaced.text()));
    EXPECT_EQ(url.withQueryItems({}).text(), "http://h/a#f");
    EXPECT_EQ(url.withQueryItems({}).query(), std::nullopt);
    EXPECT_EQ(parsed("?a").withQueryItems({}).text(), "?") << "never empty text";
}

TEST(URL, PathExtension) {
    const std::pair<const char*, const char*> cases[] = {
        {"/a/b.appex/", "appex"},
        {"/a/b.tar.gz//", "gz"},
        {"http://h.example", ""},
        {"/a.d/b", ""},
        {"/.profile", ""},
        {"/b.", ""},
        {"/", ""},
        {"/a.p%6Eg?x.y#z.w", "png"},
        {"/a.x%2Fy", ""},
    };
    for (const auto& [text, extension] : cases) {
        EXPECT_EQ(parsed(text).pathExtension(), extension) << text;
    }
}

TEST(URL, Components) {
    EXPECT_EQ(URL::encodeComponent("aZ09-._~ /+&ü"), "aZ09-._~%20%2F%2B%26%C3%BC");
    EXPECT_EQ(URL::decodeComponent("a%2fb+%C3%BC"), "a/b+ü");
    for (const char* text : {"%", "%2", "%2g", "a%%20"}) {
        EXPECT_EQ(URL::decodeComponent(text), std::nullopt) << text;
    }
}

} // namespace
