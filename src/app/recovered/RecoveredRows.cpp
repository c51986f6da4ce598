#include "app/recovered/RecoveredRows.h"

#include "app/look/Paint.h"
#include "app/window/ItemToolTip.h"
#include "app/window/panels/FileDetails.h"

#include <QDateTime>
#include <QLocale>
#include <QPainter>

namespace quillmark {

namespace {

constexpr int rowHeight = 46;
constexpr double contentInset = 18; ///< from the edges of the list to the text of a row

QString timeText(WallTime time)
{
    const auto sinceEpoch = std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch());
    return QLocale(QLocale::Russian)
        .toString(QDateTime::fromMSecsSinceEpoch(sinceEpoch.count()), QStringLiteral("d MMMM yyyy, HH:mm"));
}

} // namespace

RecoveredModel::RecoveredModel(AppState& app, QObject* parent)
    : QAbstractListModel(parent)
    , m_app(app)
    , m_entries(app.recovered.entries->value_or(RecoveredTexts::Entries()))
{
    m_connection = app.recovered.entries.onChange([this](const auto& entries) {
        beginResetModel();
        m_entries = entries.value_or(RecoveredTexts::Entries());
        endResetModel();
    });
}

const RecoveredEntry* RecoveredModel::entry(const QModelIndex& index) const
{
    return index.isValid() && size_t(index.row()) < m_entries.size() ? &m_entries[size_t(index.row())]
                                                                     : nullptr;
}

int RecoveredModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_entries.size());
}

QVariant RecoveredModel::data(const QModelIndex& index, int role) const
{
    const RecoveredEntry* const shown = entry(index);
    if (!shown)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return shown->firstLine.empty() ? QStringLiteral("Пусто") : singleLine(shown->firstLine);
    case Qt::AccessibleDescriptionRole:
        return QStringLiteral("%1 · %2 · %3")
            .arg(timeText(shown->time), singleLine(shown->file), fileSizeText(shown->size));
    case Qt::ToolTipRole:
        return itemToolTip(shown->file, shown->path);
    default:
        return {};
    }
}

void RecoveredDelegate::paint(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const QRectF rect(option.rect);
    if (option.state & QStyle::State_Selected)
        paintRowGround(*painter, rect,
            color(option.state & QStyle::State_HasFocus ? ThemeColor::selection : ThemeColor::accentTint));
    else if (option.state & QStyle::State_MouseOver)
        paintRowGround(*painter, rect, color(ThemeColor::separator));
    m_row.paint(*painter, rect.adjusted(contentInset, 0, -contentInset, 0), index.data().toString(),
        index.data(Qt::AccessibleDescriptionRole).toString());
}

QSize RecoveredDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const
{
    return {option.rect.width(), rowHeight};
}

} // namespace quillmark
