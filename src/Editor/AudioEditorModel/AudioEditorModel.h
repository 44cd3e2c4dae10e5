#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "Editor/AudioEditorCore/AudioEditorBuffer.h"
#include "Editor/AudioEditorCore/AudioEditorLengthChange.h"
#include "Editor/AudioEditorCore/AudioEditorPeaks.h"
#include "Editor/AudioEditorModel/AudioEditorChanges.h"
#include "Editor/AudioEditorModel/AudioEditorState.h"
#include "Editor/AudioEditorModel/EditPlan.h"
#include "Editor/AudioEditorModel/UndoHistory.h"
#include "Preferences/Settings.h"
#include "Support/Observers.h"
#include "Support/Progress.h"

namespace kiv {

// Whether a model keeps the peaks of its sound: views draw from them, and without one nobody reads them.
enum class Peaks { kept, none };

// One buffer shared by all documents of the running program.
struct Clipboard {
    std::optional<AudioEditorBuffer> buffer;
    Observers<Clipboard> changed;
};

// Work on values away from the main thread, and what is made of it back there.
struct AnalysisPlan {
    std::function<void(Progress &)> work;
    std::function<void(std::exception_ptr failure)> done;
};

// The editing state of one document. Main thread only. Views read state() and observe; every change goes through here, so that
// a value that is already held changes nothing and tells nobody. It never touches files or sound devices: it reports to its
// owner through the on… callbacks, any of which may be absent.
class AudioEditorModel {
public:
    AudioEditorModel(Settings &settings, Clipboard &clipboard, Peaks peaks = Peaks::kept);

    bool keepsPeaks() const { return peaks_ == Peaks::kept; }  // without, those of the state are none
    const AudioEditorState &state() const { return state_; }
    Clipboard &clipboard() { return clipboard_; }
    const Clipboard &clipboard() const { return clipboard_; }
    const UndoHistory &history() const { return history_; }
    Observers<Changes> observers;

    // Called when a change of the audio is complete, before the observers are told of it.
    std::function<void(const AudioEditorBuffer &before, const AudioEditorBuffer &now)> onAudioChanged;
    // Of the edit that onAudioChanged tells of; of one that was undone or redone none is known.
    const AudioEditorLengthChange &lengthChange() const { return lengthChange_; }
    std::function<void(FrameRange range, bool loop)> onPlayRange;
    std::function<void(bool)> onLoopChanged;
    std::function<void(bool)> onEqChanged;
    // Hands out the sound as it is with a stroke under way, and as it was when that is called off; only while playing.
    std::function<void(const AudioEditorBuffer &preview)> onSpectralPreview;
    // Seconds from any moment on; what spaces the previews.
    std::function<double()> clock = [] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
    };
    std::function<void(bool)> onEditLoopChanged;
    std::function<void()> onLoopPointsChanged;
    std::function<void()> onPlayJoint;
    std::function<void(const std::vector<FrameRange> &slices, const std::string &name)> onSaveSlices;
    // Wants a long edit carried out away from the main thread; absent, it is done on the spot as the short ones are.
    std::function<void(EditPlan)> onLongEdit;
    // Wants a search or a detection run away from the main thread; absent, it is run on the spot.
    std::function<void(AnalysisPlan)> onAnalyse;
    // Wants the loose peaks of a new sound measured; absent, they are measured on the spot.
    std::function<void()> onLoosePeaks;

    // What a file says of its sound before it has been read: an empty sound of that kind, so that views can lay themselves out.
    // Only before the first load.
    void expect(AudioEditorBuffer empty);
    // A fresh sound as read from a file, with its marks: no undo, whole file in view. The peaks are built here when not given.
    void load(AudioEditorBuffer buffer, std::vector<std::int64_t> markers, std::optional<FrameRange> loop,
              std::optional<AudioEditorPeaks> peaks = {});
    // The same for a file read again: keeps view, cursor and selection as far as they lie inside the new sound.
    void reload(AudioEditorBuffer buffer, std::vector<std::int64_t> markers, std::optional<FrameRange> loop,
                std::optional<AudioEditorPeaks> peaks = {});

    // Selection when there is one, else the whole sound, else nothing.
    std::optional<FrameRange> activeRange() const;
    bool canCut() const;  // a selection exists and is shorter than the sound
    bool canUndo() const { return history_.undoDepth() > 0; }
    bool canRedo() const { return history_.redoDepth() > 0; }

    // Every change of the sound: an undoable step. Cursor and selection are clamped to the new sound; markers and loop follow
    // the length change.
    void commit(AudioEditorBuffer buffer, std::int64_t cursor, std::optional<FrameRange> selection,
                AudioEditorLengthChange change);
    // The same with what an edit has made of the sound of that generation; one of another is dropped: false.
    bool commit(std::int64_t generation, EditOutcome outcome);
    // Takes what the loose peaks of the sound of that generation have been measured to be.
    void completePeaks(std::int64_t generation, const AudioEditorPeaks &tail);
    // A sound with its marks that had been made of the present one elsewhere, before the program ended: an undoable step.
    void recover(Snapshot edited);
    // Carries an edit out on the present sound and commits it: now, or later when it is a long one.
    void apply(EditPlan plan);
    // A change of the loop alone: an undoable step without a buffer. A loop that is already so makes none.
    void commitLoop(std::optional<FrameRange> loop);
    // The same of the slices alone.
    void commitSlices(std::vector<FrameRange> slices);
    // For drags: shows a loop without making a step. The end of the drag makes one step of all that it moved, or puts the loop
    // back as it was at the first move. Any other change of the sound ends the drag first.
    void moveLoop(FrameRange loop);
    void endLoopMove();
    void cancelLoopMove();
    void undo();
    void redo();
    // The sound as it was when the content had this version; nothing where no undo or redo would bring it back.
    std::optional<AudioEditorBuffer> soundOfVersion(std::int64_t version) const;
    // As UndoHistory::keepOnly.
    void keepOnly(std::size_t undos, std::size_t redos) { history_.keepOnly(undos, redos); }

    // Placing the cursor clears the selection; selecting puts the cursor at its start. Positions are clamped.
    void placeCursor(std::int64_t frame);
    void select(FrameRange range);  // empty once clamped: no selection, the cursor at its start
    void selectAll();
    void selectNone();
    // Both as given (clamped), for drags and for what a cancelled drag had at its press.
    void setCursorAndSelection(std::int64_t cursor, std::optional<FrameRange> selection);

    void setView(AudioEditorZoom view);  // clamped to its limits
    void zoomBy(double factor);          // around zoomAnchor()
    void zoomToFit();
    void zoomToSelection();
    double zoomAnchor() const;  // the cursor if in view, else the centre
    void revealFrame(double frame);
    void verticalZoomIn();
    void verticalZoomOut();
    void setVerticalZoomDb(int db);

    void toggleTimeUnit();
    void setFollowPlayhead(bool follow);
    void setLoopEnabled(bool enabled);
    void setEqEnabled(bool enabled);
    void setPlayheads(std::vector<AudioEditorPlayhead> heads);
    void setPlaying(bool playing);
    void setPreviewPlaying(bool playing);
    void setMaxLevel(std::optional<float> level);

    void openDialog(Dialog dialog);
    void closeDialog();
    void setGainDb(double db);       // clamped to −24 … 24, stored
    void setNormalizeDb(double db);  // clamped to −24 … 0, stored
    void setMonoSource(AudioEditorMonoSource source);
    void setStretch(const StretchSettings &settings);  // clamped
    void setDialogText(std::string text, bool typedAhead);

    void setPointerMode(std::optional<PointerMode> mode);
    void setViewDragged(bool dragged);

    // The modes, of which entering one leaves the others. AudioEditorLoops, AudioEditorSlices and AudioEditorSpectralPainting
    // say what is done in them; they alone set their states, which stores what of them is a setting.
    void setEditLoopEnabled(bool enabled);
    void setSlicerEnabled(bool enabled);
    void setSpectralEnabled(bool enabled);
    void setLoopState(AudioEditorLoopState next);
    void setSlicerState(AudioEditorSlicerState next);
    void setSpectralState(AudioEditorSpectralState next);
    void analyse(AnalysisPlan plan);

    // Changes made until the returned guard dies are told as one. Guards may nest.
    class Batch {
    public:
        explicit Batch(AudioEditorModel &model) : model_(model) { ++model_.batchDepth_; }
        Batch(const Batch &) = delete;
        Batch &operator=(const Batch &) = delete;
        ~Batch();

    private:
        AudioEditorModel &model_;
    };

private:
    struct Content {
        AudioEditorBuffer buffer;
        std::optional<AudioEditorPeaks> peaks;  // built here when not given
        std::int64_t cursor;
        std::optional<FrameRange> selection;
        std::int64_t version;
        std::shared_ptr<const AudioEditorSpectral::State> spectral = {};  // what made this sound of another, if that did
        AudioEditorLengthChange change = {};
    };

    // Whether that was a change.
    template <class T, class Part>
    bool set(T Part::*field, std::type_identity_t<T> value, Change change) {
        if (state_.*field == value) return false;
        state_.*field = std::move(value);
        tell(change);
        return true;
    }
    void setDialogNumber(double AudioEditorState::*field, const NumberSetting &row, double value);
    void tell(Change change);
    void flush();
    void install(Content content);
    void takePeaks(Content &content);
    enum class Keep { sound, marksOnly };
    Snapshot currentSnapshot(Keep keep) const;
    void pushHistory(Snapshot snapshot);
    Snapshot counterpart(const Snapshot &taken);
    void commitOutcome(EditOutcome outcome);
    void restore(std::optional<Snapshot> snapshot);
    void readModeSettings();
    void readSpectralSettings();
    void holdSpectral(std::shared_ptr<const AudioEditorSpectral::State> spectral);
    enum class Mode { editLoop, slicer, spectral };
    void leaveModesBut(Mode mode);
    void endMoves();  // of drags
    void setSlices(std::vector<FrameRange> slices);
    std::optional<FrameRange> clampedLoop(std::optional<FrameRange> loop) const;

    Settings &settings_;
    Clipboard &clipboard_;
    const Peaks peaks_;
    AudioEditorState state_;
    UndoHistory history_;
    AudioEditorLengthChange lengthChange_;
    std::int64_t nextVersion_ = 1;
    std::uint32_t pending_ = 0;
    int batchDepth_ = 0;
};

}  // namespace kiv
