#include "app/window/StatusBarView.h"

#include "app/Paint.h"
#include "app/window/SaveStateLabel.h"
#include "app/window/TextButton.h"

#include <QActionGroup>
#include <QHBoxLayout>
#include <QMenu>
#include <QPainter>

namespace quillmark {

StatusBarView::StatusBarView(AppState& app, QWidget* parent)
    : QWidget(parent)
    , m_app(app)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFont(monospacedFont(11.5));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(10, 5, 10, 5);
    layout->setSpacing(14);
    m_statistics = addLabel();
    m_position = addLabel();
    layout->addStretch(1);
    m_language = addButton(QStringLiteral("Язык подсветки"));
    m_lineEndings = addButton(QStringLiteral("Кликните для конвертации LF ↔ CRLF"));
    m_encoding = addLabel();
    m_saveState = new SaveStateLabel(font(), this);
    layout->addWidget(m_saveState);
    connect(m_language, &TextButton::clicked, this, [this] {
        QMenu* const menu = makeLanguageMenu();
        menu->popup(m_language->mapToGlobal(QPoint(0, -menu->sizeHint().height())));
    });
    connect(m_lineEndings, &TextButton::clicked, this, &StatusBarView::convertLineEndings);
    watch();
}

TextLabel* StatusBarView::addLabel()
{
    auto* label = new TextLabel(font(), ThemeColor::secondaryText, this);
    layout()->addWidget(label);
    return label;
}

TextButton* StatusBarView::addButton(const QString& toolTip)
{
    auto* button = new TextButton(font(), toolTip, this);
    layout()->addWidget(button);
    return button;
}

QMenu* StatusBarView::makeLanguageMenu()
{
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    auto* choice = new QActionGroup(menu);
    for (const Language language : allLanguages()) {
        QAction* row = menu->addAction(QString::fromUtf8(displayName(language)), this,
            [this, language] { m_app.setLanguageOverride(language); });
        row->setCheckable(true);
        row->setChecked(language == m_app.syntaxLanguage.get());
        choice->addAction(row);
    }
    return menu;
}

void StatusBarView::convertLineEndings()
{
    m_app.setLineEndings(m_app.lineEndings.get() == "LF" ? "CRLF" : "LF");
}

void StatusBarView::watch()
{
    const auto follow = [this](auto& observable, auto show) {
        show(observable.get());
        m_connections.push_back(observable.onChange(show));
    };
    follow(m_app.isLoading, [this](bool) { showStatistics(); });
    follow(m_app.stats, [this](const TextStats&) { showStatistics(); });
    follow(m_app.cursorLine, [this](int64_t) { showPosition(); });
    follow(m_app.cursorColumn, [this](int64_t) { showPosition(); });
    follow(m_app.syntaxLanguage,
        [this](Language language) { m_language->setLabel(QString::fromUtf8(displayName(language))); });
    follow(m_app.lineEndings,
        [this](const std::string& endings) { m_lineEndings->setLabel(QString::fromUtf8(endings)); });
    follow(m_app.encodingName,
        [this](const std::string& name) { m_encoding->setText(QString::fromUtf8(name)); });
    follow(m_app.isDirty, [this](bool isDirty) { m_saveState->setDirty(isDirty); });
}

void StatusBarView::showStatistics()
{
    const TextStats& stats = m_app.stats.get();
    m_statistics->setText(m_app.isLoading.get() ? QStringLiteral("Загрузка…")
                                                : QStringLiteral("строк %1 · слов %2 · симв. %3")
                                                      .arg(stats.lines)
                                                      .arg(stats.words)
                                                      .arg(stats.chars));
}

void StatusBarView::showPosition()
{
    m_position->setText(
        QStringLiteral("Ln %1, Col %2").arg(m_app.cursorLine.get()).arg(m_app.cursorColumn.get()));
}

void StatusBarView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), color(ThemeColor::barBackground));
    drawHairline(painter, rect(), Qt::TopEdge, color(ThemeColor::separator));
}

} // namespace quillmark
