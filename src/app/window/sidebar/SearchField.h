// The sidebar's field for what to look for among the notes.
#pragma once

#include "app/look/TextField.h"

#include <string_view>

namespace quillmark {

/// Every edit by the user, also by Escape and the button that clears it, is a textEdited().
class SearchField : public TextField {
    Q_OBJECT

public:
    explicit SearchField(QWidget* parent);

    void setQuery(std::string_view query); ///< the caret stays when it is what the field shows already

    QSize sizeHint() const override;

Q_SIGNALS:
    void wentDown(); ///< the user wants to go on to what was found
    void accepted(); ///< Enter
    void left(); ///< Escape in an empty field

protected:
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace quillmark
