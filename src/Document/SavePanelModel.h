#pragma once

#include <optional>
#include <string>

#include "Document/DocumentUi.h"
#include "Document/PanelPaths.h"
#include "Document/SaveFormats.h"

namespace kiv {

// What is chosen in a panel that asks where to save: a folder, a name and perhaps a format. The name may also be typed as a
// path, from "/", from "~" for the user's home, or from the folder on. A value; knows nothing of the disk but what it is told.
class SavePanelModel {
public:
    SavePanelModel(const DocumentUi::SavePanel &asked, std::string home);

    const std::string &folder() const { return folder_; }
    const std::string &name() const { return name_; }  // as it stands in the field
    const std::optional<AudioSaveFormat> &format() const { return format_; }

    // Of a path that was typed only its last part stays.
    void setFolder(const std::string &folder);
    // Nothing while it is being read.
    void setAccess(std::optional<FolderListing::Access> access) { access_ = access; }
    // The name in the field is what comes back when a path to a folder has been followed.
    void keepName();
    // An extension that is a format's chooses it.
    void typeName(const std::string &name);
    // Of a file that is there, in a form that can be written.
    void takeName(const std::string &name);
    void chooseContainer(SaveContainer container);
    void chooseFormat(const AudioSaveFormat &format);

    enum class Meaning { nothing, folder, file };
    Meaning meaning() const;
    bool isPath() const;
    std::string typedPath() const;  // absolute, as typed; of a folder without a slash at its end
    std::string target() const;     // the file to write, with its extension

    std::optional<BegunPath> begunFolder() const;

    PathVerdict verdict() const;

private:
    std::string extension() const;
    void applyExtension();

    std::string home_, folder_, name_, proposedName_;
    std::string fixedExtension_;  // where no format can be chosen
    std::optional<AudioSaveFormat> format_, wished_;
    std::optional<FolderListing::Access> access_;
};

// What Save comes to: a file to take, or a folder to enter. Blocks; any thread but the main and audio threads.
PathCheck checkTarget(Files &files, const SavePanelModel &model);

}  // namespace kiv
