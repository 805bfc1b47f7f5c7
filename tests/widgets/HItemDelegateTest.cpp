// SPDX-License-Identifier: GPL-2.0-or-later

#include "widgets/HItemDelegate.h"

#include <QtTest>
#include <QtWidgets>

namespace {

QImage paint(const QAbstractItemDelegate& delegate, const QModelIndex& index,
             QStyleOptionViewItem::ViewItemFeatures features)
{
    QStyleOptionViewItem option;
    option.rect = QRect(0, 0, 90, 300);
    option.state = QStyle::State_Enabled | QStyle::State_Active;
    option.features = features;
    option.palette = QApplication::palette();
    QImage image(option.rect.size(), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    delegate.paint(&painter, option, index);
    return image;
}

} // namespace

class HItemDelegateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cellsLookTheSameAsWithTheDelegateOfQt();
    void theToolTipOfACellIsShownAsPlainText();
};

void HItemDelegateTest::cellsLookTheSameAsWithTheDelegateOfQt()
{
    QStandardItemModel model;
    model.appendRow(new QStandardItem(QStringLiteral("several words that need more than one line")));
    const QModelIndex index = model.index(0, 0);
    HItemDelegate delegate;
    QItemDelegate plain;

    const QImage wrapped = paint(delegate, index, QStyleOptionViewItem::WrapText);
    const QImage unwrapped = paint(delegate, index, QStyleOptionViewItem::None);
    QVERIFY(wrapped != unwrapped);
    QCOMPARE(wrapped, paint(plain, index, QStyleOptionViewItem::WrapText));
    QCOMPARE(unwrapped, paint(plain, index, QStyleOptionViewItem::None));
}

void HItemDelegateTest::theToolTipOfACellIsShownAsPlainText()
{
    const QString markup = QStringLiteral("Available: <h1>x</h1>\nInstalled: <img src=\"/dev/zero\">");
    QStandardItemModel model;
    for (const QString& text : {markup, QStringLiteral("ordinary"), QString()}) {
        model.appendRow(new QStandardItem(QStringLiteral("cell")));
        model.item(model.rowCount() - 1)->setToolTip(text);
    }
    QTableView view;
    view.setItemDelegate(new HItemDelegate(&view));
    view.setModel(&model);
    view.setAttribute(Qt::WA_AlwaysShowToolTips);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    const auto tipOf = [&view, &model](int row) {
        const QPoint place = view.visualRect(model.index(row, 0)).center();
        QHelpEvent event(QEvent::ToolTip, place, view.viewport()->mapToGlobal(place));
        QApplication::sendEvent(view.viewport(), &event);
        return QToolTip::text();
    };
    QTextDocument document;
    document.setHtml(tipOf(0));
    QCOMPARE(document.toPlainText(), markup);
    QCOMPARE(tipOf(1), QStringLiteral("ordinary"));
    tipOf(2);
    QTRY_VERIFY_WITH_TIMEOUT(!QToolTip::isVisible(), 20000);
}

QTEST_MAIN(HItemDelegateTest)
#include "HItemDelegateTest.moc"
