// Below the save panel: the formats that a text may be saved in. Choosing one gives the typed name its
// extension; a name typed by hand chooses none.
#pragma once

#include <QPointer>

#include <string_view>

class QComboBox;
class QFileDialog;
class QWidget;

namespace quillmark {

class SaveFormatAccessory {
public:
    /// Shows the format with exactly this extension, or the first one. The panel has its name already.
    SaveFormatAccessory(QFileDialog& panel, std::string_view defaultExt);

    QPointer<QWidget> view; ///< of the panel's
    QPointer<QComboBox> popup;
    QPointer<QFileDialog> panel;

private:
    static void formatChanged(QFileDialog& panel, int format);
};

} // namespace quillmark
