// The invocation flow and entry points with the plug-in's core linked in, so that the working
// region it settles can be read back. (The bundle's own flow is in bundle_test.cpp.)
#include "tamberlyne/plugin/entry_points.h"
#include "tamberlyne/plugin/invocation.h"
#include "tamberlyne/plugin/plugin_globals.h"
#include "tests/plugin/plugin_test_support.h"

#include <cstring>

using plugin_test::HostSession;

namespace {

// Measures firstMeas..lastMeas of staves 1-2 from and to the given positions.
EREGION Region(uint16_t firstMeas, TIME_EDU startPos, uint16_t lastMeas, TIME_EDU endPos)
{
    return support::Region(1, 2, firstMeas, lastMeas, startPos, endPos);
}

bool Same(const EREGION& a, const EREGION& b)
{
    return std::memcmp(&a, &b, sizeof(EREGION)) == 0;
}

}   // namespace

TEST(PluginInvocation, WorkingRegionFromTheAnswers)
{
    HostSession session;
    const EREGION document = Region(1, 17, 4, 2048);   // the host's positions are kept as given
    session.frontEnd.AddAnswer(kAlertAnswerYes);
    EXPECT_EQ(StavioExtensionInvoke(nullptr, 0, nullptr, &document), 0);
    EXPECT_TRUE(Same(SelRegion, document) && IsOpen == 1);

    const EREGION fromBeatTwo = Region(2, 1024, 3, 2048);
    session.frontEnd.AddAnswer(kAlertAnswerYes);
    EXPECT_EQ(StavioExtensionInvoke(nullptr, 0, &fromBeatTwo, &document), 0);
    EXPECT_TRUE(Same(SelRegion, Region(2, 0, 3, kEndOfMeasure)));
    EXPECT_EQ(_pSelRegion, &fromBeatTwo);

    const EREGION whole = Region(3, 0, 5, kEndOfMeasure);
    EXPECT_EQ(StavioExtensionInvoke(nullptr, 0, &whole, &document), 0);
    EXPECT_TRUE(Same(SelRegion, whole));
    EXPECT_EQ(session.frontEnd.Alerts().size(), 2u);   // no question for whole measures
    ASSERT_EQ(session.host.DialogRequests().size(), 3u);
    EXPECT_EQ(session.host.DialogRequests()[2].flags, &dlgFlags);

    session.frontEnd.AddAnswer(kAlertAnswerNo);
    needRefresh = 1;
    EXPECT_EQ(StavioExtensionInvoke(nullptr, 0, nullptr, &document), 0);
    EXPECT_EQ(needRefresh, 0);
    EXPECT_EQ(session.host.DialogRequests().size(), 3u);
    // The bundle's own questions: nothing selected, and a selection not of whole measures.
    std::vector<int32_t> asked;
    for (const auto& alert : session.frontEnd.Alerts()) {
        EXPECT_EQ(alert.request.style, kAlertQuestion);
        asked.push_back(alert.request.stringId);
    }
    EXPECT_EQ(asked, (std::vector<int32_t>{0x4E210001, 0x4E21000B, 0x4E210001}));
    EXPECT_NE(session.AlertTexts()[0].find('?'), std::string::npos);
}

TEST(PluginEntryPoints, VersionInitAndEnumerate)
{
    HostSession session;
    EXPECT_EQ(Ext_getversion(0x0c000000), 0x09000000u);
    uint32_t flags = 0xffffffff;
    EXPECT_EQ(Ext_init(nullptr, &flags), 1);
    EXPECT_EQ(plugin_test::Ints(StavVersion, flags), plugin_test::Ints(0x0c000000, 0));

    SXT_MENUSTRING_PACKET packet;
    std::memset(&packet, 0x5A, sizeof(packet));
    const SXT_MENUSTRING_PACKET untouched = packet;
    EXPECT_EQ(Ext_enumerate(nullptr, 1, &packet), 0);
    EXPECT_EQ(std::memcmp(&packet, &untouched, sizeof(packet)), 0);
    EXPECT_EQ(Ext_enumerate(nullptr, -1, &packet), 1);
    EXPECT_GT(strnlen(packet.undoString, 64), 0u);
    EXPECT_LT(strnlen(packet.menuItem, 64), 64u);
    // The other fields are left alone.
    EXPECT_EQ(plugin_test::Ints(packet.useGetMenuStatus, packet.needSelectedRegion, packet.launchable),
              plugin_test::Ints(0, 0, untouched.launchable));
    EXPECT_EQ(std::memcmp(&packet.flags, &untouched.flags, sizeof(packet.flags)), 0);
    EXPECT_EQ(initFlag, 0xFFFFFFFFu);
}
