#include "App/Commands/EditorCommand.h"

#include <algorithm>

namespace kiv {
namespace {

using Group = EditorCommandGroup;

std::optional<Shortcut> key(std::uint64_t modifiers, const char *name) { return Shortcut{name, modifiers}; }

std::array<EditorCommandRow, editorCommandCount> makeRows() {
    constexpr std::uint64_t bare = 0;
    constexpr std::uint64_t sh = Shortcut::shift, opt = Shortcut::option, cmd = Shortcut::command;
    constexpr std::nullopt_t none = std::nullopt;
    using enum EditorCommand;
    // Bare letters and letters with shift are meant for the waveform, where no text is typed.
    // clang-format off
    return {{
        {open,                "open",                "Open…",                       Group::file,      key(cmd, "o"),       0},
        {save,                "save",                "Save",                        Group::file,      key(cmd, "s"),       1},
        {saveAs,              "saveAs",              "Save As…",                    Group::file,      key(sh | cmd, "s"),  1},
        {saveSelection,       "saveSelection",       "Save Selection As…",          Group::file,      key(opt | sh, "s"),  1},
        {saveSlices,          "saveSlices",          "Save Slices",                 Group::file,      key(opt | cmd, "s"), 1},
        {revert,              "revert",              "Revert to Saved",             Group::file,      none,                1},
        {close,               "close",               "Close",                       Group::file,      key(cmd, "w"),       2},
        {undo,                "undo",                "Undo",                        Group::edit,      key(cmd, "z"),       0},
        {redo,                "redo",                "Redo",                        Group::edit,      key(sh | cmd, "z"),  0},
        {cut,                 "cut",                 "Cut",                         Group::edit,      key(cmd, "x"),       1},
        {copy,                "copy",                "Copy",                        Group::edit,      key(cmd, "c"),       1},
        {paste,               "paste",               "Paste",                       Group::edit,      key(cmd, "v"),       1},
        {delete_,             "delete",              "Delete",                      Group::edit,      key(bare, "delete"), 1},
        {selectAll,           "selectAll",           "Select All",                  Group::edit,      key(cmd, "a"),       2},
        {selectNone,          "selectNone",          "Deselect",                    Group::edit,      none,                2},
        {playStop,            "playStop",            "Play / Stop",                 Group::transport, key(bare, "space"),  0},
        {loop,                "loop",                "Loop (Cycle)",                Group::transport, key(bare, "c"),      0},
        {playSliceUnderMouse, "playSliceUnderMouse", "Play Slice Under Mouse",      Group::transport, key(bare, "s"),      0},
        {goToStart,           "goToStart",           "Go to Start",                 Group::transport, key(bare, "1"),      1},
        {goToEnd,             "goToEnd",             "Go to End",                   Group::transport, key(bare, "2"),      1},
        {gain,                "gain",                "Gain…",                       Group::audio,     key(sh, "g"),        0},
        {normalize,           "normalize",           "Normalize…",                  Group::audio,     key(sh, "n"),        0},
        {fadeIn,              "fadeIn",              "Fade In",                     Group::audio,     key(sh, "i"),        1},
        {fadeOut,             "fadeOut",             "Fade Out",                    Group::audio,     key(sh, "o"),        1},
        {silence,             "silence",             "Silence",                     Group::audio,     key(sh, "s"),        1},
        {reverse,             "reverse",             "Reverse",                     Group::audio,     key(sh, "r"),        1},
        {trim,                "trim",                "Trim to Selection",           Group::audio,     key(sh, "t"),        1},
        {mono,                "mono",                "Convert to Mono…",            Group::audio,     key(sh, "m"),        2},
        {stereo,              "stereo",              "Convert to Stereo",           Group::audio,     none,                2},
        {timeStretch,         "timeStretch",         "Pitch / Time…",               Group::audio,     key(sh, "p"),        3},
        {zoomIn,              "zoomIn",              "Zoom In",                     Group::view,      key(cmd, "1"),       0},
        {zoomOut,             "zoomOut",             "Zoom Out",                    Group::view,      key(cmd, "2"),       0},
        {zoomFit,             "zoomFit",             "Zoom to Fit",                 Group::view,      key(bare, "a"),      0},
        {zoomSelection,       "zoomSelection",       "Zoom to Selection",           Group::view,      key(bare, "z"),      0},
        {verticalZoomIn,      "verticalZoomIn",      "Vertical Zoom In",            Group::view,      none,                1},
        {verticalZoomOut,     "verticalZoomOut",     "Vertical Zoom Out",           Group::view,      none,                1},
        {verticalZoomReset,   "verticalZoomReset",   "Reset Vertical Zoom",         Group::view,      none,                1},
        {toggleTimeUnit,      "toggleTimeUnit",      "Seconds / Samples",           Group::view,      key(bare, "v"),      2},
        {followPlayhead,      "followPlayhead",      "Follows Playhead",            Group::view,      none,                2},
        {slicer,              "slicer",              "Slicer",                      Group::view,      key(opt, "s"),       3},
        {eq,                  "eq",                  "EQ",                          Group::view,      key(opt, "e"),       3},
        {editLoop,            "editLoop",            "Edit Loop",                   Group::loop,      key(opt, "l"),       0},
        {findLoop,            "findLoop",            "Find Loops",                  Group::loop,      none,                1},
        {playLoopJoint,       "playLoopJoint",       "Play Loop Joint",             Group::loop,      key(bare, "j"),      1},
        {applyLoopCrossfade,  "applyLoopCrossfade",  "Apply Loop Crossfade",        Group::loop,      none,                1},
        {spectral,            "spectral",            "Spectral",                    Group::spectral,  key(opt, "f"),       0},
        {spectralSwapBrush,   "spectralSwapBrush",   "Swap Attenuate / Accentuate", Group::spectral,  key(bare, "x"),      0},
        {spectralClear,       "spectralClear",       "Clear Spectrum",              Group::spectral,  none,                1},
        {spectralReset,       "spectralReset",       "Reset Spectrum",              Group::spectral,  none,                1},
    }};
    // clang-format on
}

}  // namespace

const std::array<EditorCommandRow, editorCommandCount> &editorCommands() {
    static const auto rows = makeRows();
    return rows;
}

const EditorCommandRow &row(EditorCommand command) { return editorCommands()[std::size_t(command)]; }

std::optional<EditorCommand> editorCommandFromRaw(std::string_view raw) {
    const auto &rows = editorCommands();
    const auto found = std::ranges::find(rows, raw, &EditorCommandRow::raw);
    return found == rows.end() ? std::nullopt : std::optional(found->command);
}

std::string_view heading(EditorCommandGroup group) {
    constexpr std::array<std::string_view, editorCommandGroupCount> headings{"File", "Edit", "Transport", "Audio",
                                                                             "View", "Loop", "Spectral"};
    return headings[std::size_t(group)];
}

bool repeats(EditorCommand command) {
    using enum EditorCommand;
    return command == zoomIn || command == zoomOut || command == undo || command == redo;
}

bool actsUnderSheets(EditorCommand command) {
    using enum EditorCommand;
    constexpr EditorCommand those[] = {playStop,      zoomIn,         zoomOut,         zoomFit,
                                       zoomSelection, verticalZoomIn, verticalZoomOut, verticalZoomReset};
    return std::ranges::find(those, command) != std::end(those);
}

}  // namespace kiv
