#include "Browse/PageAccess.h"

#include <gmock/gmock.h>

namespace neb::nebsc {
namespace {

using testing::HasSubstr;

const PageAccess access(4711);

std::string cookie() {
    const std::string header = access.newCookie();
    return header.substr(0, header.find(';'));
}

PageRequestHeaders own() {
    return {.host = "127.0.0.1:4711",
            .origin = "http://127.0.0.1:4711",
            .site = "same-origin",
            .cookies = cookie()};
}

TEST(PageAccess, AcceptsItsOwnPage) {
    EXPECT_EQ(access.refusal(own()), "");
}

TEST(PageAccess, AcceptsAnAddressThatTheUserTyped) {
    PageRequestHeaders headers = own();
    headers.origin.clear();
    headers.site = "none";
    EXPECT_EQ(access.refusal(headers), "");
    headers.site.clear();
    EXPECT_EQ(access.refusal(headers), "");
}

TEST(PageAccess, FindsItsCookieAmongOthers) {
    PageRequestHeaders headers = own();
    headers.cookies = "nebsc-4710=x; " + cookie() + "; theme=dark";
    EXPECT_EQ(access.refusal(headers), "");
}

TEST(PageAccess, RefusesARequestWithoutItsCookie) {
    PageRequestHeaders headers = own();
    const std::string right = headers.cookies;
    for (const std::string& wrong :
         {std::string(), right.substr(0, right.size() - 1), right + "0", "x" + right,
          right.substr(right.find('=')), std::string("nebsc-4711="), std::string("nebsc-4711")}) {
        headers.cookies = wrong;
        EXPECT_THAT(access.refusal(headers), HasSubstr("has the token")) << wrong;
    }
}

TEST(PageAccess, RefusesPagesOfOtherSites) {
    for (const char* origin : {"http://example.org", "null", "http://127.0.0.1:4712",
                               "https://127.0.0.1:4711", "http://127.0.0.1:47110"}) {
        PageRequestHeaders headers = own();
        headers.origin = origin;
        EXPECT_THAT(access.refusal(headers), HasSubstr("other sites")) << origin;
    }
    for (const char* site : {"cross-site", "same-site"}) {
        PageRequestHeaders headers = own();
        headers.site = site;
        EXPECT_THAT(access.refusal(headers), HasSubstr("other sites")) << site;
    }
}

/// The file that leads the browser to the URL is another site.
TEST(PageAccess, OpensThePageFromAFile) {
    const PageRequestHeaders headers{.host = "127.0.0.1:4711", .site = "cross-site"};
    EXPECT_EQ(access.refusalToOpen(headers), "");
    EXPECT_NE(access.refusal(headers), "");
}

TEST(PageAccess, OpensThePageForNoScriptOfAnotherSite) {
    const PageRequestHeaders headers{.host = "127.0.0.1:4711", .origin = "http://example.org"};
    EXPECT_NE(access.refusalToOpen(headers), "");
}

/// A page whose name resolves to the loopback address.
TEST(PageAccess, RefusesOtherHosts) {
    for (const char* host :
         {"", "example.org:4711", "localhost:4711", "127.0.0.1", "127.0.0.1:1"}) {
        PageRequestHeaders headers = own();
        headers.host = host;
        EXPECT_THAT(access.refusal(headers), HasSubstr("http://127.0.0.1:4711")) << host;
        EXPECT_NE(access.refusalToOpen(headers), "") << host;
    }
}

TEST(PageAccess, KnowsItsToken) {
    const std::string url = access.url();
    const std::string token = url.substr(url.find('=') + 1);
    EXPECT_EQ(url, "http://127.0.0.1:4711/?token=" + token);
    EXPECT_EQ(token.size(), 48U);
    EXPECT_TRUE(access.isToken(token));
    EXPECT_FALSE(access.isToken(""));
    EXPECT_FALSE(access.isToken(token + "0"));
    EXPECT_FALSE(access.isToken(token.substr(1)));
}

TEST(PageAccess, HasOtherSecretsEachTime) {
    const PageAccess other(4711);
    EXPECT_NE(other.url(), access.url());
    EXPECT_NE(other.newCookie(), access.newCookie());
}

/// Scripts cannot read the cookie, and other sites cannot make the browser send it.
TEST(PageAccess, KeepsTheCookieToItself) {
    EXPECT_THAT(access.newCookie(), HasSubstr("; HttpOnly; SameSite=Strict; Path=/"));
    EXPECT_EQ(access.newCookie().find(access.url().substr(access.url().find('=') + 1)),
              std::string::npos);
}

}  // namespace
}  // namespace neb::nebsc
