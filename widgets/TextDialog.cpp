// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/TextDialog.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QTextOption>
#include <QVBoxLayout>

#include "widgets/HTextEdit.h"

TextDialog::TextDialog(QWidget* parent) : QDialog(parent), edit(new HTextEdit(80, 24))
{
    setAttribute(Qt::WA_ShowModal);

    edit->setReadOnly(true);
    edit->setLineWrapMode(QTextEdit::NoWrap);
    edit->setWordWrapMode(QTextOption::NoWrap);
    edit->setTabChangesFocus(true);
    QPushButton* close = new QPushButton(tr("Close"));

    QVBoxLayout* column = new QVBoxLayout(this);
    column->addWidget(edit);
    QHBoxLayout* buttons = new QHBoxLayout;
    column->addLayout(buttons);
    buttons->addStretch(1);
    buttons->addWidget(close);

    connect(close, SIGNAL(clicked()), this, SLOT(accept()));
}

void TextDialog::setText(QString text)
{
    edit->setAccessibleName(windowTitle());
    edit->setPlainText(text);
}
