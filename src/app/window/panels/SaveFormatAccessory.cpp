#include "app/window/panels/SaveFormatAccessory.h"

#include "app/look/Paint.h"
#include "core/SaveAsFormat.h"

#include <QComboBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>

namespace quillmark {

namespace {

constexpr QSize viewSize(360, 40);
constexpr double labelSize = 12;

} // namespace

SaveFormatAccessory::SaveFormatAccessory(QFileDialog& panel, std::string_view defaultExt)
    : view(new QWidget(&panel))
    , popup(new QComboBox(view))
    , panel(&panel)
{
    view->setFixedSize(viewSize);
    auto* label = new QLabel(QStringLiteral("Формат:"), view);
    label->setFont(systemFont(labelSize));
    label->setBuddy(popup);
    popup->setAccessibleName(QStringLiteral("Формат"));
    for (const SaveAsFormat& format : SaveAsFormat::all())
        popup->addItem(QString::fromUtf8(format.label));
    popup->setMaxVisibleItems(popup->count());
    if (const auto format = formatWithExtension(defaultExt))
        popup->setCurrentIndex(int(*format));

    auto* row = new QHBoxLayout(view);
    row->setContentsMargins(20, 0, 20, 0); // 10 above and below: the controls are 20 high at least
    row->setSpacing(8);
    row->addStretch(1);
    row->addWidget(label);
    row->addWidget(popup);
    row->addStretch(1);
    QObject::connect(
        popup, &QComboBox::activated, &panel, [&panel](int format) { formatChanged(panel, format); });
}

void SaveFormatAccessory::formatChanged(QFileDialog& panel, int format)
{
    auto* name = panel.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    const auto formats = SaveAsFormat::all();
    if (name && format >= 0 && size_t(format) < formats.size())
        name->setText(
            QString::fromStdString(nameInFormat(name->text().toStdString(), formats[size_t(format)])));
}

} // namespace quillmark
