#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "App/Commands/Shortcut.h"

// Every action that a menu or a key triggers in an editor window, as rows of one table: menus, keys, tips, the shortcuts pane,
// `kiv commands` and the steps of `kiv edit` read these and nothing else.
namespace kiv {

// In the order of the shortcuts pane, of conflict search and of key matching.
// clang-format off
enum class EditorCommand {
    open, save, saveAs, saveSelection, saveSlices, revert, close,
    undo, redo, cut, copy, paste, delete_, selectAll, selectNone,
    playStop, loop, playSliceUnderMouse, goToStart, goToEnd,
    gain, normalize, fadeIn, fadeOut, silence, reverse, trim, mono, stereo, timeStretch,
    zoomIn, zoomOut, zoomFit, zoomSelection, verticalZoomIn, verticalZoomOut, verticalZoomReset, toggleTimeUnit,
    followPlayhead, slicer, eq,
    editLoop, findLoop, playLoopJoint, applyLoopCrossfade,
    spectral, spectralSwapBrush, spectralClear, spectralReset,
};
// clang-format on
inline constexpr int editorCommandCount = 49;

enum class EditorCommandGroup { file, edit, transport, audio, view, loop, spectral };
inline constexpr int editorCommandGroupCount = 7;

struct EditorCommandRow {
    EditorCommand command;
    std::string_view raw;    // the stored name
    std::string_view title;  // as menus and panes show it, in the source's own spelling
    EditorCommandGroup group;
    std::optional<Shortcut> shortcut;  // the default
    int rule = 0;                      // which section of its menu the command stands in, counted from 0
};

const std::array<EditorCommandRow, editorCommandCount> &editorCommands();
const EditorCommandRow &row(EditorCommand command);
std::optional<EditorCommand> editorCommandFromRaw(std::string_view raw);
std::string_view heading(EditorCommandGroup group);

// Whether holding the key performs the command again and again: zoomIn, zoomOut, undo, redo.
bool repeats(EditorCommand command);
// Whether it acts while a sheet is open: what may be heard and looked at meanwhile.
bool actsUnderSheets(EditorCommand command);

}  // namespace kiv
