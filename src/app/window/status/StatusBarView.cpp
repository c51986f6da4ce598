#include "app/window/status/StatusBarView.h"

#include "app/look/Paint.h"
#include "app/look/TextButton.h"
#include "app/window/status/SaveStateLabel.h"

#include <QActionGroup>
#include <QHBoxLayout>
#include <QMenu>
#include <QPainter>

#include <array>

namespace quillmark {

namespace {

constexpr int horizontalPadding = 10;
constexpr int verticalPadding = 5;
constexpr int spacing = 14;

/// What is shown of the parts that may give way.
struct Share {
    size_t statisticsLeftOut = 0; ///< numbers, from the last one
    bool hasEncoding = true;
    bool hasLanguage = true;
};

constexpr std::array shares{
    Share{},
    Share{.statisticsLeftOut = 1},
    Share{.statisticsLeftOut = 2},
    Share{.statisticsLeftOut = 2, .hasEncoding = false},
    Share{.statisticsLeftOut = 3, .hasEncoding = false},
    Share{.statisticsLeftOut = 3, .hasEncoding = false, .hasLanguage = false},
};

} // namespace

StatusBarView::StatusBarView(AppState& app, QWidget* parent)
    : QWidget(parent)
    , m_app(app)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFont(monospacedFont(11.5));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(horizontalPadding, verticalPadding, horizontalPadding, verticalPadding);
    layout->setSpacing(spacing);
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

std::vector<QWidget*> StatusBarView::buttons() const
{
    return {m_language, m_lineEndings};
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
    m_app.setLineEndings(m_app.lineEndings.get() == LineEnds::lf ? LineEnds::crlf : LineEnds::lf);
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
    follow(m_app.syntaxLanguage, [this](Language language) {
        m_language->setLabel(QString::fromUtf8(displayName(language)));
        fit();
    });
    follow(m_app.lineEndings, [this](LineEnds endings) {
        m_lineEndings->setLabel(QString::fromUtf8(nameOf(endings)));
        fit();
    });
    follow(m_app.encodingName, [this](TextEncoding encoding) {
        m_encoding->setText(QString::fromUtf8(nameOf(encoding)));
        fit();
    });
    follow(m_app.isSaved, [this](bool isSaved) { m_saveState->setDirty(!isSaved); });
}

void StatusBarView::showStatistics()
{
    const TextStats& stats = m_app.stats.get();
    const QString lines = QStringLiteral("строк %1").arg(stats.lines);
    const QString words = lines + QStringLiteral(" · слов %1").arg(stats.words);
    const QString all = words + QStringLiteral(" · симв. %1").arg(stats.chars);
    const QString loading = QStringLiteral("Загрузка…");
    if (m_app.isLoading.get())
        m_statisticsTexts = {loading, loading, loading, {}};
    else
        m_statisticsTexts = {all, words, lines, {}};
    m_statisticsWidths.clear();
    for (const QString& text : m_statisticsTexts)
        m_statisticsWidths.push_back(TextLabel::widthOf(text, font()));
    fit();
}

void StatusBarView::showPosition()
{
    m_position->setText(
        QStringLiteral("Ln %1, Col %2").arg(m_app.cursorLine.get()).arg(m_app.cursorColumn.get()));
    fit();
}

void StatusBarView::fit()
{
    if (m_statisticsTexts.empty())
        return; // the first values are still being taken over
    size_t step = 0;
    while (step + 1 < shares.size() && widthAt(step) > width())
        ++step;
    give(step);
}

int StatusBarView::widthAt(size_t step) const
{
    const Share& share = shares.at(step);
    int width = 2 * horizontalPadding + m_saveState->sizeHint().width();
    const auto add = [&width](int part) { width += part + spacing; };
    add(m_position->sizeHint().width());
    add(m_lineEndings->sizeHint().width());
    if (const int statistics = m_statisticsWidths.at(share.statisticsLeftOut))
        add(statistics);
    if (share.hasLanguage)
        add(m_language->sizeHint().width());
    if (share.hasEncoding)
        add(m_encoding->sizeHint().width());
    return width;
}

void StatusBarView::give(size_t step)
{
    const Share& share = shares.at(step);
    const QString& shown = m_statisticsTexts.at(share.statisticsLeftOut);
    const QString& all = m_statisticsTexts.front();
    m_statistics->setText(shown);
    m_statistics->setAccessibleName(all);
    m_statistics->setToolTip(shown == all ? QString() : all);
    m_statistics->setVisible(!shown.isEmpty());
    m_encoding->setVisible(share.hasEncoding);
    m_language->setVisible(share.hasLanguage);
}

QSize StatusBarView::minimumSizeHint() const
{
    return {0, QWidget::minimumSizeHint().height()};
}

void StatusBarView::resizeEvent(QResizeEvent*)
{
    fit();
}

void StatusBarView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), color(ThemeColor::barBackground));
    drawHairline(painter, rect(), Qt::TopEdge, color(ThemeColor::separator));
}

} // namespace quillmark
