// SPDX-License-Identifier: MIT
#include "merix/ed/reactor_list.h"

#include "merix/ed/editor.h"
#include "merix/ed/input_points.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

using namespace merix::ed;

namespace {

struct Reactor : MxEditorReactor {
    std::function<void()> onView;
    int calls = 0;
    void viewChanged() override {
        ++calls;
        if (onView)
            onView();
    }
};

struct Monitor : MxEdInputPointMonitor {
    std::vector<double> seen;
    Mx::ErrorStatus monitorInputPoint(const MxEdInputPoint& input) override {
        seen.push_back(input.rawPoint.x);
        return Mx::eOk;
    }
};

} // namespace

TEST(ReactorList, AReactorRemovedDuringTheWalkIsNotCalledAnyMore) {
    Editor& editor = Editor::instance();
    Reactor first, second;
    editor.addReactor(&first);
    editor.addReactor(&second);
    first.onView = [&] {
        editor.removeReactor(&first);
        editor.removeReactor(&second);
    };
    editor.notifyViewChanged();
    editor.notifyViewChanged();
    EXPECT_EQ(first.calls, 1);
    EXPECT_EQ(second.calls, 0);
}

TEST(ReactorList, AReactorAddedDuringTheWalkIsCalledTheNextTime) {
    Editor& editor = Editor::instance();
    Reactor first, second;
    editor.addReactor(&first);
    first.onView = [&] { editor.addReactor(&second); };
    editor.notifyViewChanged();
    EXPECT_EQ(second.calls, 0);
    editor.notifyViewChanged();
    EXPECT_EQ(second.calls, 1) << "adding it twice has no effect";
    editor.removeReactor(&first);
    editor.removeReactor(&second);
}

TEST(ReactorList, AReactorThatThrowsDoesNotKeepTheOthersFromBeingTold) {
    Editor& editor = Editor::instance();
    Reactor first, second;
    editor.addReactor(&first);
    editor.addReactor(&second);
    Console::instance().markRead();
    first.onView = [] { throw std::runtime_error("out of breath"); };
    editor.notifyViewChanged();
    EXPECT_EQ(second.calls, 1);
    EXPECT_TRUE(Console::instance().unread().contains(QStringLiteral("out of breath")));
    editor.removeReactor(&first);
    editor.removeReactor(&second);
}

TEST(InputPoints, MonitorsAreToldUntilTheyAreRemoved) {
    InputPoints points;
    Monitor monitor;
    EXPECT_EQ(points.addPointMonitor(&monitor), Mx::eOk);
    EXPECT_EQ(points.addPointMonitor(&monitor), Mx::eOk);
    EXPECT_EQ(points.addPointMonitor(nullptr), Mx::eInvalidInput);
    MxEdInputPoint input;
    input.rawPoint = {4, 5, 0};
    points.notify(input);
    EXPECT_EQ(monitor.seen, std::vector<double>{4});
    EXPECT_EQ(points.removePointMonitor(&monitor), Mx::eOk);
    EXPECT_EQ(points.removePointMonitor(&monitor), Mx::eKeyNotFound);
    points.notify(input);
    EXPECT_EQ(monitor.seen.size(), 1U);
}
