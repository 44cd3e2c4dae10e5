#pragma once

#include "Audio/Playback/PlaybackEngine.h"
#include "Document/Journal/DocumentJournal.h"
#include "Editor/AudioEditorModel/AudioEditorModel.h"
#include "Platform/DecodedReader.h"
#include "Platform/Files.h"
#include "Platform/Jobs.h"

namespace kiv {

// What a document works with; made in main, borrowed by all documents.
struct DocumentServices {
    Files &files;
    Jobs &jobs;
    Settings &settings;
    Clipboard &clipboard;
    PlaybackEngine *playback = nullptr;       // none: nothing is played
    DecodedReader *decoders = nullptr;        // none: only WAV and AIFF are read
    Peaks peaks = Peaks::kept;                // none: for work without a view
    const JournalFolder *journals = nullptr;  // none: a crash loses what was not saved
};

}  // namespace kiv
