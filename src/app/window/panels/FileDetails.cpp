#include "app/window/panels/FileDetails.h"

#include "app/look/SymbolIcon.h"

#include <QDateTime>
#include <QFileSystemModel>
#include <QLocale>

#include <array>

namespace quillmark {

namespace {

enum Column { nameColumn, sizeColumn, typeColumn, modifiedColumn }; // of QFileSystemModel

} // namespace

QString fileSizeText(int64_t bytes)
{
    static constexpr std::array units{"Б", "КБ", "МБ", "ГБ", "ТБ"};
    size_t unit = 0;
    double size = double(bytes);
    for (; size >= 1024 && unit + 1 < units.size(); ++unit)
        size /= 1024;
    const int decimals = unit > 0 && size < 10 ? 1 : 0;
    return QLocale(QLocale::Russian).toString(size, 'f', decimals) + QChar::Nbsp
        + QString::fromUtf8(units[unit]);
}

QVariant FileDetails::data(const QModelIndex& index, int role) const
{
    const auto* files = qobject_cast<const QFileSystemModel*>(sourceModel());
    if (role != Qt::DisplayRole || !files || !index.isValid())
        return QIdentityProxyModel::data(index, role);
    const QModelIndex source = mapToSource(index);
    switch (index.column()) {
    case sizeColumn:
        return files->isDir(source) ? QString() : fileSizeText(files->size(source));
    case modifiedColumn:
        return files->lastModified(source).toString(QStringLiteral("dd.MM.yyyy HH:mm"));
    default:
        return QIdentityProxyModel::data(index, role);
    }
}

QIcon FileSymbols::icon(IconType type) const
{
    switch (type) {
    case Computer:
    case Desktop:
    case Drive:
    case Network:
        return symbolIcon("desktopcomputer");
    case Folder:
    case Trashcan:
        return symbolIcon("folder");
    case File:
        break;
    }
    return symbolIcon("doc");
}

QIcon FileSymbols::icon(const QFileInfo& file) const
{
    return symbolIcon(file.isDir() ? "folder" : "doc");
}

QString FileSymbols::type(const QFileInfo& file) const
{
    if (file.isDir())
        return QStringLiteral("Папка");
    const QString suffix = file.suffix().toUpper();
    return suffix.isEmpty() ? QStringLiteral("Файл") : QStringLiteral("Файл ") + suffix;
}

} // namespace quillmark
