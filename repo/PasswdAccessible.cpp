// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/PasswdAccessible.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QWidget>

namespace {

class PasswordFieldInterface : public QAccessibleWidget
{
public:
    explicit PasswordFieldInterface(QWidget* widget) : QAccessibleWidget(widget, QAccessible::EditableText) {}

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.passwordEdit = true;
        state.editable = true;
        return state;
    }
};

QAccessibleInterface* interfaceWithoutText(const QString& className, QObject* object)
{
    auto* widget = qobject_cast<QWidget*>(object);
    if (widget == nullptr) {
        return nullptr;
    }
    if (className == QLatin1String("PasswdField")) {
        return new PasswordFieldInterface(widget);
    }
    if (className == QLatin1String("PasswdInnerLineEdit") ||
        className == QLatin1String("PasswdInnerTextEdit")) {
        return new QAccessibleWidget(widget, QAccessible::Client);
    }
    return nullptr;
}

} // namespace

void PasswdAccessible::install()
{
    static bool installed = false;
    if (!installed) {
        installed = true;
        QAccessible::installFactory(interfaceWithoutText);
    }
}
