#include "desktop/QtAppearance.h"

#include <QApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

#include <utility>

namespace quillmark {

namespace {

// The desktop's setting that says which colours it prefers.
constexpr QLatin1String portalService("org.freedesktop.portal.Desktop");
constexpr QLatin1String portalPath("/org/freedesktop/portal/desktop");
constexpr QLatin1String portalSettings("org.freedesktop.portal.Settings");
constexpr QLatin1String settingGroup("org.freedesktop.appearance");
constexpr QLatin1String settingKey("color-scheme");
enum Preference : uint { noPreference = 0, prefersDark = 1, prefersLight = 2 };

const QString connectionName = QStringLiteral("quillmark-appearance");
constexpr int middleLightness = 128;

} // namespace

ThemeVariant variantOf(const QPalette& palette)
{
    return palette.color(QPalette::Base).lightness() < middleLightness ? ThemeVariant::dark
                                                                       : ThemeVariant::light;
}

QColor themeColor(ThemeColor name, ThemeVariant variant)
{
    const ThemeValue value = themeValue(name, variant);
    QColor color = QColor::fromRgb(value.rgb);
    color.setAlphaF(static_cast<float>(value.alpha));
    return color;
}

QPalette themePalette(ThemeVariant variant)
{
    using enum ThemeColor;
    const auto color = [variant](ThemeColor name) { return themeColor(name, variant); };
    QPalette palette(color(foreground), color(barBackground), color(background), color(separator),
        color(separator), color(foreground), color(foreground), color(background), color(barBackground));
    palette.setColor(QPalette::AlternateBase, color(panelBackground));
    palette.setColor(QPalette::Highlight, color(accent));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::PlaceholderText, color(secondaryText));
    palette.setColor(QPalette::ToolTipBase, color(panelBackground));
    palette.setColor(QPalette::ToolTipText, color(foreground));
    palette.setColor(QPalette::Link, color(accent));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, color(secondaryText));
    return palette;
}

QtAppearance::QtAppearance(Scheduler& scheduler)
    : m_scheduler(scheduler)
    , m_startVariant(variantOf(QGuiApplication::palette()))
    , m_desktopVariant(m_startVariant)
{
    askDesktop();
}

QtAppearance::~QtAppearance()
{
    QDBusConnection::disconnectFromBus(connectionName);
}

void QtAppearance::apply(AppearanceMode mode)
{
    m_mode = mode;
    update();
}

void QtAppearance::update()
{
    const ThemeVariant wanted = m_mode == AppearanceMode::system ? m_desktopVariant
        : m_mode == AppearanceMode::dark                         ? ThemeVariant::dark
                                                                 : ThemeVariant::light;
    if (m_isThemed && wanted == variant.get())
        return;
    m_isThemed = true;
    QApplication::setPalette(themePalette(wanted));
    m_variant.set(wanted);
}

void QtAppearance::askDesktop()
{
    // Reaching the bus takes some milliseconds, or long where it is broken: the window must not wait for it.
    m_connecting = m_scheduler.background(
        Priority::utility,
        [](const CancelToken&) {
            return QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName);
        },
        [this](const QDBusConnection& bus) {
            if (bus.isConnected())
                listen(bus);
        });
}

void QtAppearance::listen(QDBusConnection bus)
{
    // Naming the service here would make Qt wait for the bus to say who owns it; a slot that names the types
    // of the arguments is refused where nobody has used those types before.
    bus.connect({}, portalPath, portalSettings, QStringLiteral("SettingChanged"), this,
        SLOT(settingChanged(QDBusMessage)));

    QDBusMessage question
        = QDBusMessage::createMethodCall(portalService, portalPath, portalSettings, QStringLiteral("Read"));
    question << QString(settingGroup) << QString(settingKey);
    auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        if (reply.isValid())
            takePreference(reply.value().variant());
        answer->deleteLater();
    });
}

void QtAppearance::settingChanged(const QDBusMessage& change)
{
    const QVariantList arguments = change.arguments();
    if (arguments.size() == 3 && arguments[0] == QString(settingGroup) && arguments[1] == QString(settingKey))
        takePreference(arguments[2]);
}

void QtAppearance::takePreference(QVariant value)
{
    while (value.canConvert<QDBusVariant>()) // "Read" wraps the value once more than the signal does
        value = value.value<QDBusVariant>().variant();
    const uint preference = value.toUInt();
    m_desktopVariant = preference == prefersDark ? ThemeVariant::dark
        : preference == prefersLight             ? ThemeVariant::light
                                                 : m_startVariant;
    if (m_isThemed)
        update();
}

} // namespace quillmark
