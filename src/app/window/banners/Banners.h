// The banners above the editor, one below the other, always in the same order.
#pragma once

#include "core/AppState.h"

#include <QWidget>

#include <array>

class QVBoxLayout;

namespace quillmark {

class Banner;

class Banners : public QWidget {
    Q_OBJECT

public:
    Banners(AppState& app, QWidget* parent);

private:
    enum class Rank { readOnly, notice, unsafeWords, trashedNote }; ///< from above
    static constexpr size_t rankCount = 4;

    void watch();
    Banner* make(Rank rank);
    Banner* makeWarning();
    Banner* makeOfferToRestore();
    Banner& banner(Rank rank); ///< made when first needed
    void setShown(Rank rank, bool isShown);

    AppState& m_app;
    QVBoxLayout* m_column;
    std::array<Banner*, rankCount> m_banners{};
    std::vector<Connection> m_connections;
};

} // namespace quillmark
