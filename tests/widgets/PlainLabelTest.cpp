// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/PlainLabel.h"

#include <QtTest>
#include <QtWidgets>

class PlainLabelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theLabelShowsMarkupAndMnemonicsUnchanged()
    {
        const QString markup = QStringLiteral("<b>bold</b> &amp; <img src=x>");
        const PlainLabel made(markup);
        PlainLabel changed;
        changed.setText(markup);
        const QLabel usual(markup);
        for (const QLabel* label :
             {static_cast<const QLabel*>(&made), static_cast<const QLabel*>(&changed)}) {
            QCOMPARE(label->textFormat(), Qt::PlainText);
            QCOMPARE(label->text(), markup);
            QVERIFY(label->sizeHint().width() >
                    usual.sizeHint().width()); // the label shows the tags, so it is wider
        }
    }

    void deletingTheParentDeletesTheLabel()
    {
        QPointer<PlainLabel> label;
        {
            QWidget parent;
            label = new PlainLabel(QStringLiteral("text"), &parent);
            QCOMPARE(label->parentWidget(), &parent);
        }
        QVERIFY(label.isNull());
    }

    void assistiveProgramsAndStyleSheetsTreatTheWidgetAsALabel()
    {
        PlainLabel label(QStringLiteral("text"));
        QAccessibleInterface* found = QAccessible::queryAccessibleInterface(&label);
        QVERIFY(found != nullptr);
        QCOMPARE(found->role(), QAccessible::StaticText);
        QCOMPARE(found->text(QAccessible::Name), QString("text"));
        label.setStyleSheet(QStringLiteral("QLabel { font-weight: bold; }"));
        label.ensurePolished();
        QVERIFY(label.font().bold());
    }
};

QTEST_MAIN(PlainLabelTest)
#include "PlainLabelTest.moc"
