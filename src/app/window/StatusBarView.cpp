#include "app/window/StatusBarView.h"

#include "app/Paint.h"
#include "app/window/SaveStateLabel.h"

#include <QHBoxLayout>
#include <QPainter>

namespace quillmark {

StatusBarView::StatusBarView(AppState& app, QWidget* parent)
    : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFont(monospacedFont(11.5));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(10, 5, 10, 5);
    layout->setSpacing(14);
    m_loading = addLabel();
    m_loading->setText(QStringLiteral("Загрузка…"));
    m_position = addLabel();
    layout->addStretch(1);
    m_language = addLabel();
    m_lineEndings = addLabel();
    m_encoding = addLabel();
    m_saveState = new SaveStateLabel(font(), this);
    layout->addWidget(m_saveState);
    watch(app);
}

TextLabel* StatusBarView::addLabel()
{
    auto* label = new TextLabel(font(), ThemeColor::secondaryText, this);
    layout()->addWidget(label);
    return label;
}

void StatusBarView::watch(AppState& app)
{
    const auto follow = [this](auto& observable, auto show) {
        show(observable.get());
        m_connections.push_back(observable.onChange(show));
    };
    follow(app.isLoading, [this](bool isLoading) { m_loading->setVisible(isLoading); });
    follow(app.cursorLine, [this, &app](int64_t) { showPosition(app); });
    follow(app.cursorColumn, [this, &app](int64_t) { showPosition(app); });
    follow(app.syntaxLanguage,
        [this](Language language) { m_language->setText(QString::fromUtf8(displayName(language))); });
    follow(app.lineEndings,
        [this](const std::string& endings) { m_lineEndings->setText(QString::fromUtf8(endings)); });
    follow(
        app.encodingName, [this](const std::string& name) { m_encoding->setText(QString::fromUtf8(name)); });
    follow(app.isDirty, [this](bool isDirty) { m_saveState->setDirty(isDirty); });
}

void StatusBarView::showPosition(const AppState& app)
{
    m_position->setText(
        QStringLiteral("Ln %1, Col %2").arg(app.cursorLine.get()).arg(app.cursorColumn.get()));
}

void StatusBarView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), color(ThemeColor::barBackground));
    drawHairline(painter, rect(), Qt::TopEdge, color(ThemeColor::separator));
}

} // namespace quillmark
