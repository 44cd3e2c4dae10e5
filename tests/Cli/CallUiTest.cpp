#include "Cli/CallUi.h"

#include <gtest/gtest.h>

namespace kiv::Cli {
namespace {

TEST(CallUi, DoesNothingItIsAskedAboutWhereverCancelStands) {
    const std::pair<std::vector<std::string>, std::size_t> cases[] = {
        {{"Cancel", "Save Anyway"}, 0},
        {{"Replace", "Cancel"}, 1},
        {{"Apply EQ and Save", "Save Without EQ", "Cancel"}, 1},
    };
    for (const auto &[buttons, expected] : cases) {
        CallUi ui;
        std::size_t answered = buttons.size();
        ui.ask({"Sure?", "", buttons}, [&](std::size_t button) { answered = button; });
        EXPECT_EQ(answered, expected) << buttons.front();
        EXPECT_EQ(ui.leavesEqOut, ui.error.empty());
    }
}

}  // namespace
}  // namespace kiv::Cli
