#include "app/window/OpenPanel.h"

#include <QFile>
#include <QFileDialog>

namespace quillmark {

namespace {

QString startFolder(const std::shared_ptr<EditorTab>& beside)
{
    const FileSource* file = beside ? beside->file() : nullptr;
    if (!file)
        return QDir::homePath();
    return QFile::decodeName(QByteArray::fromStdString(file->url.parent_path().native()));
}

} // namespace

std::vector<Path> runOpenPanel(QWidget& window, const std::shared_ptr<EditorTab>& beside)
{
    QFileDialog panel(&window, QStringLiteral("Открыть"), startFolder(beside));
    panel.setOptions(QFileDialog::DontUseNativeDialog | QFileDialog::DontUseCustomDirectoryIcons);
    panel.setFileMode(QFileDialog::ExistingFiles);
    panel.resize(720, 460);
    if (panel.exec() != QDialog::Accepted)
        return {};
    std::vector<Path> chosen;
    for (const QString& file : panel.selectedFiles())
        chosen.emplace_back(QFile::encodeName(file).toStdString());
    return chosen;
}

} // namespace quillmark
