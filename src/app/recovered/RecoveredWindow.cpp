#include "app/recovered/RecoveredWindow.h"

#include "app/look/Paint.h"
#include "app/look/TextLabel.h"
#include "app/recovered/RecoveredRows.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>
#include <QShortcut>

namespace quillmark {

namespace {

constexpr QSize defaultSize(560, 420);
constexpr double textSize = 13;
constexpr int listMargin = 8; ///< above the first row

} // namespace

RecoveredWindow::RecoveredWindow(AppState& app, Shell& shell, QWidget* mainWindow)
    : QWidget(mainWindow, Qt::Window)
    , m_app(app)
    , m_shell(shell)
    , m_model(new RecoveredModel(app, this))
    , m_list(new QListView(this))
    , m_nothing(new TextLabel(systemFont(textSize), ThemeColor::secondaryText, this))
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setWindowTitle(QStringLiteral("Восстановленные тексты"));
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setVerticalScrollMode(QListView::ScrollPerPixel);
    m_list->setUniformItemSizes(true);
    m_list->setMouseTracking(true);
    m_list->viewport()->setAutoFillBackground(false);
    m_list->setAccessibleName(windowTitle());
    m_list->setItemDelegate(new RecoveredDelegate(m_list));
    m_list->setModel(m_model);
    connect(m_list, &QListView::activated, this, &RecoveredWindow::open);
    connect(m_model, &RecoveredModel::modelReset, this, &RecoveredWindow::entriesChanged);
    m_nothing->setText(QStringLiteral("Восстановленных текстов нет"));

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addSpacing(listMargin);
    column->addWidget(m_list, 1);
    column->addWidget(m_nothing, 1, Qt::AlignCenter);
    column->addWidget(makeButtons());
    for (const QKeySequence& key : {QKeySequence(Qt::Key_Escape), QKeySequence(Qt::CTRL | Qt::Key_W)})
        connect(new QShortcut(key, this), &QShortcut::activated, this, &QWidget::close);
    resize(defaultSize);
    entriesChanged();
}

QWidget* RecoveredWindow::makeButtons()
{
    auto* bar = new QWidget(this);
    m_reveal = new QPushButton(QStringLiteral("Показать в папке"), bar);
    m_open = new QPushButton(QStringLiteral("Открыть"), bar);
    m_open->setDefault(true);
    connect(m_reveal, &QPushButton::clicked, this, &RecoveredWindow::reveal);
    connect(m_open, &QPushButton::clicked, this, &RecoveredWindow::open);
    auto* row = new QHBoxLayout(bar);
    row->setContentsMargins(12, 10, 12, 10);
    row->setSpacing(8);
    row->addStretch(1);
    row->addWidget(m_reveal);
    row->addWidget(m_open);
    return bar;
}

void RecoveredWindow::present()
{
    m_app.recovered.list();
    show();
    raise();
    activateWindow();
    m_list->setFocus();
}

void RecoveredWindow::entriesChanged()
{
    const bool isRead = m_app.recovered.entries->has_value();
    const bool hasSome = m_model->rowCount() > 0;
    m_list->setVisible(hasSome || !isRead);
    m_nothing->setVisible(isRead && !hasSome);
    m_reveal->setEnabled(hasSome);
    m_open->setEnabled(hasSome);
    if (!hasSome)
        return;
    m_list->setCurrentIndex(m_model->index(0));
    m_list->setFocus();
}

void RecoveredWindow::open()
{
    const RecoveredEntry* const chosen = m_model->entry(m_list->currentIndex());
    if (!chosen)
        return;
    m_app.openRecovered(RecoveredEntry(*chosen));
    parentWidget()->activateWindow();
}

void RecoveredWindow::reveal()
{
    if (const RecoveredEntry* const chosen = m_model->entry(m_list->currentIndex()))
        m_shell.reveal(chosen->path);
}

void RecoveredWindow::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), color(ThemeColor::background));
    const QRectF buttons = QRectF(m_open->parentWidget()->geometry());
    painter.fillRect(buttons, color(ThemeColor::barBackground));
    drawHairline(painter, buttons, Qt::TopEdge, color(ThemeColor::separator));
}

} // namespace quillmark
