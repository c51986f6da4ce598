// The look of the program: the palette of every Qt widget, light or dark, chosen by the user or followed from
// the desktop. Nothing here waits for D-Bus.
#pragma once

#include "base/Observable.h"
#include "base/Scheduler.h"
#include "editor/Theme.h"
#include "platform/Appearance.h"

#include <QColor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QPalette>

namespace quillmark {

ThemeVariant variantOf(const QPalette& palette); ///< by how light the background of text is
QColor themeColor(ThemeColor name, ThemeVariant variant);
QPalette themePalette(ThemeVariant variant);

/// Needs a QApplication; one a process. Main thread only.
class QtAppearance final : public QObject, public Appearance {
    Q_OBJECT

public:
    explicit QtAppearance(Scheduler& scheduler);
    ~QtAppearance() override;

    /// Widgets are painted in the new colours from the next turn of the event loop on. `system` is what the
    /// desktop's palette says until the desktop has answered what it prefers.
    void apply(AppearanceMode mode) override;

    const Observable<ThemeVariant>& variant = m_variant; ///< in effect; set after the palette

private:
    Q_SLOT void settingChanged(const QDBusMessage& change);
    void askDesktop();
    void listen(QDBusConnection bus);
    void takePreference(QVariant value);
    void update();

    Scheduler& m_scheduler;
    Variable<ThemeVariant> m_variant{ThemeVariant::light};
    const ThemeVariant m_startVariant; ///< of the desktop's own palette, before the theme's replaced it
    ThemeVariant m_desktopVariant;
    AppearanceMode m_mode = AppearanceMode::system;
    bool m_isThemed = false; ///< the application has a palette of the theme
    Task m_connecting;
};

} // namespace quillmark
