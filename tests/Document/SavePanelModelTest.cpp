#include "Document/SavePanelModel.h"

#include <gtest/gtest.h>

#include "Platform/Fake/FakeFileSystem.h"

namespace kiv {
namespace {

using enum SaveContainer;
using Meaning = SavePanelModel::Meaning;
using Access = FolderListing::Access;

SavePanelModel panel(const std::string &path, std::optional<AudioSaveFormat> format = AudioSaveFormat{wav, 24}) {
    return {{"Save As", "", path, format}, "/home/ann"};
}

TEST(SaveFormatsTest, AnotherContainerLosesNoBitsItCanKeep) {
    const struct {
        AudioSaveFormat wished;
        SaveContainer container;
        AudioSaveFormat given;
    } rows[] = {
        {{wav, 24}, aiff, {aiff, 24}},
        {{wav, 32, true}, aiff, {aiff, 32}},
        {{wav, 32, true}, flac, {flac, 24}},
        {{wav, 8}, flac, {flac, 16}},
        {{aiff, 32}, wav, {wav, 32}},
        {{flac, 16}, wav, {wav, 16}},
        {{wav, 32, true}, wav, {wav, 32, true}},
    };
    for (const auto &row : rows) EXPECT_EQ(formatIn(row.container, row.wished), row.given) << bitsLabel(row.wished);
}

TEST(SaveFormatsTest, NamesKeepWhatMeansTheFormatAndLoseWhatMeansAnother) {
    const struct {
        const char *name, *extension, *finished;
    } rows[] = {
        {"take", "wav", "take.wav"},       {"take.wav", "wav", "take.wav"},
        {"take.WAVE", "wav", "take.WAVE"}, {"take.mp3", "wav", "take.wav"},
        {"take.wav", "aiff", "take.aiff"}, {"take.aif", "aiff", "take.aif"},
        {"take.1", "flac", "take.1.flac"}, {".wav", "wav", ".wav.wav"},
        {"take.caf", "caf", "take.caf"},   {"take", "", "take"},
        {"take.", "wav", "take..wav"},     {"a.b/c", "wav", "a.b/c.wav"},
    };
    for (const auto &row : rows) EXPECT_EQ(finishedName(row.name, row.extension), row.finished) << row.name;
}

TEST(SavePanelModelTest, TheExtensionFollowsTheFormatAndTheFormatTheExtension) {
    SavePanelModel model = panel("/home/ann/Music/interview.mp3", AudioSaveFormat{wav, 32, true});
    EXPECT_EQ(model.name(), "interview.wav");
    model.chooseContainer(flac);
    EXPECT_EQ(model.name(), "interview.flac");
    EXPECT_EQ(model.format(), (AudioSaveFormat{flac, 24}));
    model.chooseContainer(wav);
    EXPECT_EQ(model.format(), (AudioSaveFormat{wav, 32, true})) << "what was wished for at first";
    model.chooseFormat({wav, 16});
    model.typeName("b.AIF");
    EXPECT_EQ(model.format(), (AudioSaveFormat{aiff, 16}));
    EXPECT_EQ(model.name(), "b.AIF");
    model.typeName("b.txt");
    EXPECT_EQ(model.format(), (AudioSaveFormat{aiff, 16}));
    EXPECT_EQ(model.target(), "/home/ann/Music/b.txt.aiff");
    model.takeName("old.mp3");
    EXPECT_EQ(model.name(), "old.aiff");
}

TEST(SavePanelModelTest, WithoutAChoiceTheProposedExtensionStays) {
    SavePanelModel model = panel("/m/part.caf", std::nullopt);
    model.typeName("b.wav");
    EXPECT_FALSE(model.format());
    EXPECT_EQ(model.target(), "/m/b.caf");
    EXPECT_EQ(model.verdict().words, "Will be saved as “b.caf”");
}

TEST(SavePanelModelTest, NamesAreNamesPathsOrNothing) {
    const std::string longest(251, 'n');
    const struct {
        std::string typed;
        Meaning meaning;
        std::string target;
    } rows[] = {
        {"a", Meaning::file, "/home/ann/Music/a.wav"},
        {"", Meaning::nothing, ""},
        {"  ", Meaning::nothing, ""},
        {"..", Meaning::nothing, ""},
        {std::string("a\0b", 3), Meaning::nothing, ""},
        {longest, Meaning::file, "/home/ann/Music/" + longest + ".wav"},
        {longest + "n", Meaning::nothing, ""},
        {"/mnt/../srv/a.wav", Meaning::file, "/srv/a.wav"},
        {"sub/a", Meaning::file, "/home/ann/Music/sub/a.wav"},
        {"../a", Meaning::file, "/home/ann/a.wav"},
        {"~/a", Meaning::file, "/home/ann/a.wav"},
        {"~a", Meaning::file, "/home/ann/Music/~a.wav"},
        {"~", Meaning::folder, "/home/ann"},
        {"/", Meaning::folder, "/"},
        {"sub/", Meaning::folder, "/home/ann/Music/sub"},
        {"../..", Meaning::folder, "/home"},
    };
    for (const auto &row : rows) {
        SavePanelModel model = panel("/home/ann/Music/x.wav");
        model.typeName(row.typed);
        EXPECT_EQ(model.meaning(), row.meaning) << row.typed;
        EXPECT_EQ(model.verdict().canConfirm, row.meaning != Meaning::nothing) << row.typed;
        if (row.meaning == Meaning::nothing) continue;
        EXPECT_EQ(row.meaning == Meaning::file ? model.target() : model.typedPath(), row.target);
    }
}

TEST(SavePanelModelTest, AFolderThatCannotBeUsedIsSaidInWords) {
    const struct {
        std::optional<Access> access;
        const char *typed;
        bool canConfirm;
        const char *words;
    } rows[] = {
        {std::nullopt, "a.wav", true, ""},
        {Access::writable, "a.wav", true, ""},
        {Access::readOnly, "a.wav", false, "This folder cannot be written to"},
        {Access::unreadable, "a.wav", false, "This folder cannot be read"},
        {Access::missing, "a.wav", false, "This folder is no longer there"},
        {Access::readOnly, "/elsewhere/a.wav", true, ""},
    };
    for (const auto &row : rows) {
        SavePanelModel model = panel("/m/x.wav");
        model.setAccess(row.access);
        model.typeName(row.typed);
        EXPECT_EQ(model.verdict().canConfirm, row.canConfirm) << row.words;
        EXPECT_EQ(model.verdict().words, row.words);
        EXPECT_EQ(model.verdict().isFault, !row.canConfirm);
    }
}

TEST(SavePanelModelTest, AnotherFolderKeepsTheName) {
    SavePanelModel model = panel("/m/x.wav");
    model.typeName("/srv/other.wav");
    model.setFolder("/m/deep/..");
    EXPECT_EQ(model.target(), "/m/other.wav");
    model.typeName("sub/");
    model.setFolder("/m/sub");
    EXPECT_EQ(model.target(), "/m/sub/x.wav") << "the proposed name comes back";
}

TEST(SavePanelModelTest, WhatSaveComesTo) {
    FakeFileSystem disk;
    const auto files = makeFiles(disk);
    disk.put("/m/folder.wav/inside", {});
    disk.put("/m/old.wav", {});
    disk.makeFolder("/locked");
    disk.protect("/locked");
    const struct {
        const char *typed;
        PathCheck::Outcome outcome;
        const char *text;
    } rows[] = {
        {"new", PathCheck::Outcome::take, "/m/new.wav"},
        {"old.wav", PathCheck::Outcome::take, "/m/old.wav"},
        {"folder", PathCheck::Outcome::refuse, "“folder.wav” is a folder"},
        {"/m/folder.wav", PathCheck::Outcome::enterFolder, "/m/folder.wav"},
        {"../m/", PathCheck::Outcome::enterFolder, "/m"},
        {"none/", PathCheck::Outcome::refuse, "There is no folder “/m/none”"},
        {"none/a", PathCheck::Outcome::refuse, "There is no folder “/m/none”"},
        {"/locked/a", PathCheck::Outcome::refuse, "“locked” cannot be written to"},
    };
    for (const auto &row : rows) {
        SavePanelModel model = panel("/m/x.wav");
        model.typeName(row.typed);
        const PathCheck check = checkTarget(*files, model);
        EXPECT_EQ(check.outcome, row.outcome) << row.typed;
        EXPECT_EQ(check.outcome == PathCheck::Outcome::refuse ? check.words : check.path, row.text);
    }
    EXPECT_EQ(newFolderFault(*files, "/m/old.wav"), "“old.wav” already exists");
    EXPECT_EQ(newFolderFault(*files, "/m/made"), "");
    EXPECT_TRUE(disk.exists("/m/made"));
}

TEST(SavePanelModelTest, TellsWhichFolderIsBeingTyped) {
    const struct {
        const char *typed;
        std::optional<std::pair<std::string, std::string>> begun;
    } rows[] = {
        {"plain", {}},
        {"~/Mu", {{"/home/ann", "Mu"}}},
        {"/", {{"/", ""}}},
        {"/srv/aud", {{"/srv", "aud"}}},
        {"sub/x", {{"/m/sub", "x"}}},
    };
    for (const auto &row : rows) {
        SavePanelModel model = panel("/m/x.wav");
        model.typeName(row.typed);
        const auto begun = model.begunFolder();
        const auto found = begun ? std::optional(std::pair(begun->folder, begun->part)) : std::nullopt;
        EXPECT_EQ(found, row.begun) << row.typed;
    }
}

}  // namespace
}  // namespace kiv
