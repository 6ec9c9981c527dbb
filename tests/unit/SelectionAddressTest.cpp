#include "web/SelectionAddress.h"
#include "support/BrowserFixture.h"

#include <gtest/gtest.h>

namespace ovel::test {
namespace {

using SelectionAddress = BrowserFixture;

TEST_F(SelectionAddress, InternalAddressThenPageAddressThenNothing) {
    launchFresh();
    EXPECT_EQ(addressTextOnSelection(*state->selectedTab()), "") << "the start page has none";

    showPage(0, "https://a.test/page", "A");
    EXPECT_EQ(addressTextOnSelection(*state->selectedTab()), "https://a.test/page");

    state->openURL("ovel://settings");
    ASSERT_TRUE(state->selectedTab()->displayAddress.get());
    EXPECT_EQ(addressTextOnSelection(*state->selectedTab()), "ovel://settings")
        << "an internal page's address wins over the page underneath";
}

} // namespace
} // namespace ovel::test
