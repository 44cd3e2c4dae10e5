#include "Document/Windows/FolderPanel.h"

#include <QFileDialog>

#include "Editor/Views/CommandTarget.h"

namespace kiv {

void showFolderPanel(QWidget *window, const DocumentUi::FolderChoice &choice,
                     std::function<void(const std::optional<std::string> &)> answer) {
    auto *dialog = new QFileDialog(window, onScreen(choice.message));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setDirectory(QString::fromStdString(choice.folder));
    dialog->setLabelText(QFileDialog::Accept, onScreen(choice.prompt));
    QObject::connect(dialog, &QFileDialog::finished, window, [dialog, answer = std::move(answer)](int result) {
        const QStringList chosen = result == QDialog::Accepted ? dialog->selectedFiles() : QStringList();
        answer(chosen.isEmpty() ? std::nullopt : std::optional(chosen.first().toStdString()));
    });
    dialog->open();
}

}  // namespace kiv
