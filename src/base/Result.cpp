#include "base/Result.h"

#include <algorithm>
#include <array>
#include <cerrno>

namespace quillmark {
namespace {

struct Row {
    int code;
    const char* text;
};

constexpr std::array rows = {
    Row{EPERM, "Операция не разрешена"},
    Row{ENOENT, "Файл или папка не найдены"},
    Row{EINTR, "Операция прервана"},
    Row{EIO, "Ошибка ввода-вывода"},
    Row{EBADF, "Файл уже закрыт"},
    Row{EAGAIN, "Ресурс временно недоступен"},
    Row{ENOMEM, "Недостаточно памяти"},
    Row{EACCES, "Нет прав доступа"},
    Row{EBUSY, "Файл или устройство заняты"},
    Row{EEXIST, "Файл с таким именем уже существует"},
    Row{EXDEV, "Файлы находятся на разных дисках"},
    Row{ENODEV, "Устройство не найдено"},
    Row{ENOTDIR, "Это не папка"},
    Row{EISDIR, "Это папка, а не файл"},
    Row{EINVAL, "Недопустимая операция"},
    Row{ENFILE, "В системе открыто слишком много файлов"},
    Row{EMFILE, "Открыто слишком много файлов"},
    Row{EFBIG, "Файл слишком велик"},
    Row{ENOSPC, "Нет места на диске"},
    Row{EROFS, "Диск доступен только для чтения"},
    Row{EMLINK, "Слишком много ссылок"},
    Row{ENAMETOOLONG, "Слишком длинное имя файла"},
    Row{ENOTEMPTY, "Папка не пуста"},
    Row{ELOOP, "Ссылки замкнуты в кольцо"},
    Row{ENOTSUP, "Операция не поддерживается"},
    Row{ETIMEDOUT, "Истекло время ожидания"},
    Row{ESTALE, "Файл на сетевом диске больше не доступен"},
    Row{EDQUOT, "Исчерпана квота на диске"},
    Row{ECANCELED, "Операция отменена"},
};

} // namespace

std::string systemErrorText(int code)
{
    const auto row = std::ranges::find(rows, code, &Row::code);
    return row != rows.end() ? row->text : "Системная ошибка " + std::to_string(code);
}

} // namespace quillmark
