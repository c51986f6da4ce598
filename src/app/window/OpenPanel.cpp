#include "app/window/OpenPanel.h"

#include "app/window/FileDetails.h"

#include <QFile>
#include <QFileDialog>
#include <QHeaderView>
#include <QTreeView>

namespace quillmark {

namespace {

QString startFolder(const std::shared_ptr<EditorTab>& beside)
{
    const FileSource* file = beside ? beside->file() : nullptr;
    if (!file)
        return QDir::homePath();
    return QFile::decodeName(QByteArray::fromStdString(file->url.parent_path().native()));
}

/// The name takes what the other columns leave.
void fitColumns(QFileDialog& panel)
{
    const auto* tree = panel.findChild<QTreeView*>(QStringLiteral("treeView"));
    if (!tree)
        return;
    tree->header()->setStretchLastSection(false);
    tree->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    tree->header()->setSectionResizeMode(0, QHeaderView::Stretch);
}

} // namespace

std::vector<Path> runOpenPanel(QWidget& window, const std::shared_ptr<EditorTab>& beside)
{
    FileSymbols symbols; // outlives the panel
    QFileDialog panel(&window, QStringLiteral("Открыть"), startFolder(beside));
    panel.setOptions(QFileDialog::DontUseNativeDialog | QFileDialog::DontUseCustomDirectoryIcons);
    panel.setFileMode(QFileDialog::ExistingFiles);
    panel.setIconProvider(&symbols);
    panel.setProxyModel(new FileDetails(&panel));
    panel.setSizeGripEnabled(false);
    panel.resize(720, 460);
    fitColumns(panel);
    if (panel.exec() != QDialog::Accepted)
        return {};
    std::vector<Path> chosen;
    for (const QString& file : panel.selectedFiles())
        chosen.emplace_back(QFile::encodeName(file).toStdString());
    return chosen;
}

} // namespace quillmark
