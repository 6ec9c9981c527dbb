#include "web/ErrorPage.h"

#include <gtest/gtest.h>

namespace ovel::test {
namespace {

TEST(CertificateErrorPage, NamesTheHostAndTheProblemAsPlainText) {
    const std::string page =
        certificateErrorPageHTML("evil.test\"><script>x</script>", "Expired & <revoked>");
    EXPECT_NE(page.find("evil.test&quot;&gt;&lt;script&gt;x&lt;/script&gt;"), std::string::npos);
    EXPECT_NE(page.find("Expired &amp; &lt;revoked&gt;"), std::string::npos);
    EXPECT_EQ(page.find("<script>"), std::string::npos) << "nothing of the network runs";
    EXPECT_NE(page.find("Not a secure connection"), std::string::npos);
}

} // namespace
} // namespace ovel::test
