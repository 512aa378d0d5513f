#include "Curtain/PrivateAppsInspector.h"

#include "tests/support/FakeWorkspace.h"

#include <gmock/gmock.h>

namespace {

using Curtain::PrivateAppRow;
using Curtain::PrivateAppsReport;
using Curtain::PrivateAppVisibility;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::FakeWorkspace;
namespace PrivateAppsInspector = Curtain::PrivateAppsInspector;

struct PrivateAppsInspectorTest : testing::Test {
    FakeWorkspace workspace;
};

TEST_F(PrivateAppsInspectorTest, NoTargetsGiveNothing) {
    workspace.run("a");
    EXPECT_THAT(PrivateAppsInspector::rows(workspace, {}), IsEmpty());
    EXPECT_EQ(PrivateAppsInspector::report(workspace, {}), PrivateAppsReport{});
    EXPECT_EQ(workspace.queries, 0);
}

TEST_F(PrivateAppsInspectorTest, RowsKeepTheOrderAndTheTargetsNames) {
    workspace.run("visible").name = "another name";
    workspace.run("hidden").hidden = true;
    EXPECT_THAT(PrivateAppsInspector::rows(workspace, {{"hidden", "H"}, {"absent", "A"}, {"visible", "V"}}),
                ElementsAre(PrivateAppRow{"hidden", "H", PrivateAppVisibility::hidden},
                            PrivateAppRow{"absent", "A", PrivateAppVisibility::notRunning},
                            PrivateAppRow{"visible", "V", PrivateAppVisibility::visible}));
}

TEST_F(PrivateAppsInspectorTest, ReportCountsByTheFirstInstance) {
    workspace.run("a");
    workspace.run("a").hidden = true;
    workspace.run("b").hidden = true;
    workspace.run("b");
    EXPECT_EQ(PrivateAppsInspector::report(workspace, {{"a", "A"}, {"b", "B"}, {"c", "C"}}),
              (PrivateAppsReport{.total = 3, .running = 2, .visible = 1, .hidden = 1}));
}

TEST_F(PrivateAppsInspectorTest, DuplicatesCountTwice) {
    workspace.run("a");
    const std::vector<CurtainCore::TargetApp> targets{{"a", "A"}, {"a", "A"}};
    EXPECT_EQ(PrivateAppsInspector::rows(workspace, targets).size(), 2U);
    EXPECT_EQ(PrivateAppsInspector::report(workspace, targets),
              (PrivateAppsReport{.total = 2, .running = 2, .visible = 2, .hidden = 0}));
}

TEST_F(PrivateAppsInspectorTest, OneQueryATarget) {
    workspace.run("a");
    PrivateAppsInspector::rows(workspace, {{"a", "A"}, {"b", "B"}});
    EXPECT_EQ(workspace.queries, 2);
    PrivateAppsInspector::report(workspace, {{"a", "A"}, {"b", "B"}});
    EXPECT_EQ(workspace.queries, 4);
}

TEST_F(PrivateAppsInspectorTest, WhereNotEveryWindowIsKnownOnlyAVisibleAppIsKnown) {
    workspace.everyWindowIsKnown = false;
    workspace.run("visible");
    workspace.run("unseen").hidden = true;
    const std::vector<CurtainCore::TargetApp> targets{{"visible", "V"}, {"unseen", "U"}, {"absent", "A"}};
    EXPECT_THAT(PrivateAppsInspector::rows(workspace, targets),
                ElementsAre(PrivateAppRow{"visible", "V", PrivateAppVisibility::visible},
                            PrivateAppRow{"unseen", "U", PrivateAppVisibility::unknown},
                            PrivateAppRow{"absent", "A", PrivateAppVisibility::unknown}));
    EXPECT_EQ(PrivateAppsInspector::report(workspace, targets),
              (PrivateAppsReport{.total = 3, .running = 1, .visible = 1, .hidden = 0, .unknown = 2}));
}

} // namespace
