#pragma once

#include <gtest/gtest.h>

#include "Editor/AudioEditorCore/TestSounds.h"
#include "Editor/AudioEditorModel/AudioEditorEdits.h"
#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Platform/Fake/FakeDefaults.h"

namespace kiv {

inline std::uint32_t bits(std::initializer_list<Change> changes) {
    std::uint32_t all = 0;
    for (const Change change : changes) all |= std::uint32_t(change);
    return all;
}

// A model with a sound of 1000 frames in two channels, and what it has told since then.
struct ModelFixture : testing::Test {
    FakeDefaults defaults;
    Settings settings{defaults};
    Clipboard clipboard;
    AudioEditorModel model{settings, clipboard};
    std::vector<std::uint32_t> told;
    Subscription subscription = model.observers.add([this](const Changes &changes) { told.push_back(changes.bits); });

    ModelFixture() { load(noise(1000, 2, 1)); }

    void load(AudioEditorBuffer buffer, std::vector<std::int64_t> markers = {}, std::optional<FrameRange> loop = {}) {
        model.load(std::move(buffer), std::move(markers), loop);
        told.clear();
    }
    // What an action told, as one set; fails when that came in more than one notice.
    template <class Act>
    std::uint32_t notices(Act act) {
        told.clear();
        act();
        EXPECT_LE(told.size(), 1u);
        return told.empty() ? 0 : told[0];
    }

    const AudioEditorState &state() const { return model.state(); }
    const AudioEditorBuffer &buffer() const { return state().buffer; }
    std::vector<float> samples(FrameRange range) const { return buffer().part(range).samples(); }
};

}  // namespace kiv
