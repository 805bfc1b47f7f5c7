// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/TextDialog.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QTextOption>
#include <QVBoxLayout>

#include "widgets/FindBar.h"
#include "widgets/HTextEdit.h"

TextDialog::TextDialog(QWidget* parent) : QDialog(parent), edit(new HTextEdit(80, 24))
{
    setAttribute(Qt::WA_ShowModal);

    edit->setReadOnly(true);
    edit->setLineWrapMode(QTextEdit::NoWrap);
    edit->setWordWrapMode(QTextOption::NoWrap);
    edit->setTabChangesFocus(true);
    auto* findBar = new FindBar(edit, this);
    auto* find = new QPushButton(tr("&Find..."));
    find->setToolTip(tr("Find a text in this window (Ctrl+F)"));
    find->setAutoDefault(false);
    QPushButton* close = new QPushButton(tr("Close"));

    QVBoxLayout* column = new QVBoxLayout(this);
    column->addWidget(edit);
    column->addWidget(findBar);
    QHBoxLayout* buttons = new QHBoxLayout;
    column->addLayout(buttons);
    buttons->addWidget(find);
    buttons->addStretch(1);
    buttons->addWidget(close);

    connect(find, SIGNAL(clicked()), findBar, SLOT(open()));
    connect(close, SIGNAL(clicked()), this, SLOT(accept()));
}

void TextDialog::setText(QString text)
{
    edit->setAccessibleName(windowTitle());
    edit->setPlainText(text);
}
