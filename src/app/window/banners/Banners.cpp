#include "app/window/banners/Banners.h"

#include "app/look/Paint.h"
#include "app/window/banners/NoticeBanner.h"
#include "app/window/banners/ReadOnlyBanner.h"

#include <QVBoxLayout>

#include <algorithm>

namespace quillmark {

Banners::Banners(AppState& app, QWidget* parent)
    : QWidget(parent)
    , m_app(app)
    , m_column(new QVBoxLayout(this))
{
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(0);
    watch();
}

void Banners::watch()
{
    const auto follow = [this](auto& observable, auto show) {
        show(observable.get());
        m_connections.push_back(observable.onChange(show));
    };
    follow(m_app.isReadOnly, [this](bool isReadOnly) { setShown(Rank::readOnly, isReadOnly); });
    follow(m_app.notice, [this](const std::optional<std::string>& text) {
        if (text)
            banner(Rank::notice).setText(singleLine(*text));
        setShown(Rank::notice, text.has_value());
    });
    follow(m_app.unsafeWords, [this](const std::optional<UnsafeWords>& words) {
        if (words)
            banner(Rank::unsafeWords).setText(singleLine(words->text));
        setShown(Rank::unsafeWords, words.has_value());
    });
    follow(m_app.trashedNote, [this](const std::optional<TrashedNote>& trashed) {
        if (trashed)
            banner(Rank::trashedNote)
                .setText(QStringLiteral("Заметка «%1» в корзине").arg(singleLine(trashed->name)));
        setShown(Rank::trashedNote, trashed.has_value());
    });
}

Banner* Banners::make(Rank rank)
{
    switch (rank) {
    case Rank::readOnly:
        return new ReadOnlyBanner(this);
    case Rank::notice:
        return new NoticeBanner([this] { m_app.dismissNotice(); }, this);
    case Rank::unsafeWords:
        return makeWarning();
    case Rank::trashedNote:
        return makeOfferToRestore();
    }
    Q_UNREACHABLE();
}

/// It stays until the words are safe, and says all that there is to say.
Banner* Banners::makeWarning()
{
    auto* warning = new Banner({.symbol = "exclamationmark.triangle",
                                   .ground = ThemeColor::selection,
                                   .symbolColor = ThemeColor::accent,
                                   .textColor = ThemeColor::foreground},
        this);
    warning->setWraps();
    return warning;
}

Banner* Banners::makeOfferToRestore()
{
    auto* offer = new Banner({.symbol = "trash"}, this);
    offer->addButton(QStringLiteral("Вернуть"), [this] { m_app.restoreTrashedNote(); });
    return offer;
}

Banner& Banners::banner(Rank rank)
{
    Banner*& banner = m_banners.at(size_t(rank));
    if (!banner) {
        banner = make(rank);
        banner->hide();
        const auto above = std::ranges::count_if(m_banners.begin(), m_banners.begin() + std::ptrdiff_t(rank),
            [](const Banner* each) { return each; });
        m_column->insertWidget(int(above), banner);
    }
    return *banner;
}

void Banners::setShown(Rank rank, bool isShown)
{
    if (isShown || m_banners.at(size_t(rank)))
        banner(rank).setVisible(isShown);
}

} // namespace quillmark
