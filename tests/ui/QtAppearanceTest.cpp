#include "desktop/QtAppearance.h"
#include "TurnUntil.h"
#include "desktop/QtScheduler.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QWidget>

#include <gtest/gtest.h>

namespace quillmark {

namespace {

using test::turnUntil;

enum : uint { noPreference = 0, prefersDark = 1, prefersLight = 2 };

/// A message bus of the tests' own in place of the session's. A process looks for that only once, so it is
/// there before the first test.
class PrivateBus : public testing::Environment {
public:
    void SetUp() override
    {
        m_daemon.start(QStringLiteral("dbus-daemon"),
            {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
        if (m_daemon.waitForStarted() && m_daemon.waitForReadyRead())
            qputenv("DBUS_SESSION_BUS_ADDRESS", m_daemon.readLine().trimmed());
    }
    void TearDown() override
    {
        m_daemon.terminate();
        m_daemon.waitForFinished();
    }

private:
    QProcess m_daemon;
};

const testing::Environment* const privateBus = testing::AddGlobalTestEnvironment(new PrivateBus);

/// A desktop that answers what it prefers, and says so when that changes.
class Portal : public QDBusVirtualObject {
public:
    Portal()
        : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("portal")))
    {
        m_bus.registerVirtualObject(m_path, this);
        m_bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
    }
    ~Portal() override { QDBusConnection::disconnectFromBus(QStringLiteral("portal")); }

    void change(uint preference)
    {
        QDBusMessage signal
            = QDBusMessage::createSignal(m_path, m_interface, QStringLiteral("SettingChanged"));
        signal << QStringLiteral("org.freedesktop.appearance") << QStringLiteral("color-scheme")
               << QVariant::fromValue(QDBusVariant(preference));
        m_bus.send(signal);
    }

    uint preferenceAtStart = noPreference;
    int questions = 0;

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override
    {
        ++questions;
        const QDBusVariant inner(preferenceAtStart);
        bus.send(message.createReply(QVariant::fromValue(
            QDBusVariant(QVariant::fromValue(inner))))); // wrapped twice, as the real one does
        return true;
    }

private:
    const QString m_path = QStringLiteral("/org/freedesktop/portal/desktop");
    const QString m_interface = QStringLiteral("org.freedesktop.portal.Settings");
    QDBusConnection m_bus;
};

class QtAppearanceTest : public testing::Test {
protected:
    ~QtAppearanceTest() override { QApplication::setPalette(m_before); }

private:
    const QPalette m_before = QApplication::palette();
};

} // namespace

TEST_F(QtAppearanceTest, FollowsTheDesktopOnlyWhereItIsAskedTo)
{
    Portal portal;
    portal.preferenceAtStart = prefersDark;
    QtScheduler scheduler;
    QtAppearance appearance(scheduler);
    appearance.apply(AppearanceMode::system);
    const auto becomes
        = [&](ThemeVariant variant) { return turnUntil([&] { return *appearance.variant == variant; }); };
    EXPECT_TRUE(becomes(ThemeVariant::dark));
    portal.change(prefersLight);
    EXPECT_TRUE(becomes(ThemeVariant::light));
    appearance.apply(AppearanceMode::dark);
    portal.change(noPreference);
    portal.change(prefersLight);
    scheduler.drain();
    EXPECT_EQ(*appearance.variant, ThemeVariant::dark);
    appearance.apply(AppearanceMode::system);
    EXPECT_TRUE(becomes(ThemeVariant::light));
    EXPECT_EQ(portal.questions, 1);
}

} // namespace quillmark
