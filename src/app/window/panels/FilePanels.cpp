#include "app/window/panels/FilePanels.h"

#include "app/window/panels/FileDetails.h"
#include "app/window/panels/SaveFormatAccessory.h"

#include <QFile>
#include <QFileDialog>
#include <QGridLayout>
#include <QHeaderView>
#include <QTreeView>

namespace quillmark {

namespace {

QString shownPath(const Path& path)
{
    return QFile::decodeName(QByteArray::fromStdString(path.native()));
}

/// The name takes what the other columns leave. The cost does not grow with the folder.
void fitColumns(QFileDialog& panel)
{
    auto* tree = panel.findChild<QTreeView*>(QStringLiteral("treeView"));
    if (!tree)
        return;
    tree->header()->setStretchLastSection(false);
    tree->setUniformRowHeights(true);
    tree->header()->setResizeContentsPrecision(0); // of the rows in view, however many there are
    tree->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    tree->header()->setSectionResizeMode(0, QHeaderView::Stretch);
}

void dress(QFileDialog& panel, FileSymbols& symbols)
{
    panel.setOptions(QFileDialog::DontUseNativeDialog | QFileDialog::DontUseCustomDirectoryIcons);
    panel.setIconProvider(&symbols);
    panel.setProxyModel(new FileDetails(&panel));
    panel.setSizeGripEnabled(false);
    panel.resize(720, 460);
    fitColumns(panel);
}

std::vector<Path> chosenIn(QFileDialog& panel)
{
    if (panel.exec() != QDialog::Accepted)
        return {};
    std::vector<Path> chosen;
    for (const QString& file : panel.selectedFiles())
        chosen.emplace_back(QFile::encodeName(file).toStdString());
    return chosen;
}

/// Under everything else, as wide as the panel.
void addBelow(QFileDialog& panel, QWidget& accessory)
{
    if (auto* grid = qobject_cast<QGridLayout*>(panel.layout()))
        grid->addWidget(&accessory, grid->rowCount(), 0, 1, grid->columnCount(), Qt::AlignHCenter);
}

} // namespace

std::vector<Path> runOpenPanel(QWidget& window, const std::optional<Path>& folder)
{
    FileSymbols symbols; // outlives the panel
    QFileDialog panel(&window, QStringLiteral("Открыть"), folder ? shownPath(*folder) : QDir::homePath());
    dress(panel, symbols);
    panel.setFileMode(QFileDialog::ExistingFiles);
    return chosenIn(panel);
}

std::optional<Path> runSavePanel(QWidget& window, const AppState::SaveSuggestion& suggestion)
{
    FileSymbols symbols; // outlives the panel
    QFileDialog panel(&window, QStringLiteral("Сохранить как"), shownPath(suggestion.folder));
    dress(panel, symbols);
    panel.setAcceptMode(QFileDialog::AcceptSave);
    panel.setFileMode(QFileDialog::AnyFile);
    panel.selectFile(QString::fromStdString(suggestion.name));
    const SaveFormatAccessory accessory(panel, suggestion.extension);
    addBelow(panel, *accessory.view);
    const std::vector<Path> chosen = chosenIn(panel);
    return chosen.empty() ? std::nullopt : std::optional(chosen.front());
}

} // namespace quillmark
