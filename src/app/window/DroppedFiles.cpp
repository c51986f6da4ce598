#include "app/window/DroppedFiles.h"

#include <QList>
#include <QString>
#include <QSysInfo>

namespace quillmark {

namespace {

bool isThisMachine(const QByteArray& host)
{
    return host.isEmpty() || host == "localhost" || host == QSysInfo::machineHostName().toUtf8();
}

} // namespace

std::vector<Path> filesInUriList(const QByteArray& list)
{
    static const QByteArray scheme("file:");
    std::vector<Path> files;
    for (const QByteArray& line : list.split('\n')) {
        QByteArray rest = line.trimmed();
        if (!rest.toLower().startsWith(scheme))
            continue;
        rest.remove(0, scheme.size());
        if (rest.startsWith("//")) {
            const qsizetype path = rest.indexOf('/', 2);
            if (path < 0 || !isThisMachine(rest.mid(2, path - 2)))
                continue;
            rest.remove(0, path);
        }
        const QByteArray path = QByteArray::fromPercentEncoding(rest);
        if (path.startsWith('/') && !path.contains('\0'))
            files.emplace_back(path.toStdString());
    }
    return files;
}

} // namespace quillmark
