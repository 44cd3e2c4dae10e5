#include "Editor/Surfaces/SavePanelLayout.h"

#include <gtest/gtest.h>

#include "Editor/Surfaces/FolderCrumbs.h"

namespace kiv {
namespace {

TEST(SavePanelLayoutTest, StandsAsDrawn) {
    const SavePanelLayout layout(savePanelWidth, savePanelHeight, {});
    EXPECT_EQ(layout.note, (Box{24, 20, 672, 36}));
    EXPECT_EQ(layout.name, (Box{96, 74, 600, 32}));
    EXPECT_EQ(layout.folder, (Box{96, 116, 600, 24}));
    EXPECT_EQ(layout.list, (Box{24, 148, 672, 318}));
    EXPECT_EQ(layout.band, (Box{0, 500, 720, 64}));
    EXPECT_EQ(layout.containers, (Box{96, 517, 191, 32}));
    EXPECT_EQ(layout.bits, (Box{341, 517, 274, 32}));
    EXPECT_EQ(layout.buttons.y, 584);
}

TEST(SavePanelLayoutTest, PartsFollowOneAnotherAtAnySize) {
    for (const int containers : {0, 191, 300})
        for (const int note : {0, 36, 52})
            for (const int field : {32, 52}) {
                const SavePanelMeasures m{.note = note, .field = field, .containers = containers};
                const int width = SavePanelLayout::smallestWidth(m), height = SavePanelLayout::smallestHeight(width, m);
                const SavePanelLayout layout(width, height, m);
                EXPECT_LE(layout.note.bottom(), layout.name.y);
                EXPECT_EQ(layout.list.height, 140);
                EXPECT_LE(layout.list.bottom(), layout.status.y);
                EXPECT_LE(layout.status.bottom(), layout.band.y);
                EXPECT_LE(layout.bits.right(), width) << "sample widths under the formats where there is no room beside";
                EXPECT_LE(layout.band.bottom(), layout.buttons.y);
                EXPECT_EQ(layout.buttons.bottom(), height - 20);
                EXPECT_GE(layout.files.width, m.places);
            }
}

TEST(FolderCrumbsTest, LeadFromHomeOrFromTheRoot) {
    using Crumbs = std::vector<FolderCrumb>;
    EXPECT_EQ(folderCrumbs("/home/ann/Music/A b", "/home/ann"),
              (Crumbs{{"Home", "/home/ann"}, {"Music", "/home/ann/Music"}, {"A b", "/home/ann/Music/A b"}}));
    EXPECT_EQ(folderCrumbs("/home/ann", "/home/ann"), (Crumbs{{"Home", "/home/ann"}}));
    EXPECT_EQ(folderCrumbs("/home/anna", "/home/ann"), (Crumbs{{"/", "/"}, {"home", "/home"}, {"anna", "/home/anna"}}));
    EXPECT_EQ(folderCrumbs("/", "/home/ann"), (Crumbs{{"/", "/"}}));
}

TEST(FolderCrumbsTest, TheLastStepsStayWhereThereIsLittleRoom) {
    const std::vector<int> widths{40, 50, 60};
    const std::pair<int, std::size_t> rows[] = {{182, 0}, {181, 1}, {152, 1}, {151, 2}, {10, 2}};
    for (const auto &[room, first] : rows) EXPECT_EQ(firstCrumbShown(widths, 16, 10, room), first) << room;
    EXPECT_EQ(firstCrumbShown({}, 16, 10, 100), 0u);
}

}  // namespace
}  // namespace kiv
