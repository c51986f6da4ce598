// How the file panel names and shows what is in a folder: in Russian whatever the desktop speaks, and with
// our own symbols.
#pragma once

#include <QFileIconProvider>
#include <QIdentityProxyModel>

namespace quillmark {

/// "33 Б", "1,2 КБ", "640 МБ": powers of 1024, one decimal below 10.
QString fileSizeText(int64_t bytes);

class FileDetails : public QIdentityProxyModel {
    Q_OBJECT

public:
    using QIdentityProxyModel::QIdentityProxyModel;

    QVariant data(const QModelIndex& index, int role) const override;
};

/// What a file is follows from its name alone: a look into it may take for ever. Any thread.
class FileSymbols : public QFileIconProvider {
public:
    QIcon icon(IconType type) const override;
    QIcon icon(const QFileInfo& file) const override;
    QString type(const QFileInfo& file) const override;
};

} // namespace quillmark
