// SPDX-License-Identifier: GPL-2.0-or-later

// The window of the history: the list of all transactions, the details of the current one, and the buttons
// that undo and repeat transactions.
//
// A worker reads the list when the window opens, and the details of a transaction shortly after it became the
// current one. The user can move on meanwhile. The window itself changes nothing: a button closes it, and its
// opener carries out what the user wants.
//
// Graphical thread; the main window makes it on the first request and keeps it.

#ifndef HISTORY_HISTORYDIALOG_H
#define HISTORY_HISTORYDIALOG_H

#include <QDialog>
#include <QHash>
#include <QTimer>

#include "yumio/HistoryRecord.h"

class FilteredList;
class HistoryModel;
class HTextEdit;
class PlainLabel;
class QPushButton;
class YumIO;

class HistoryDialog : public QDialog
{
    Q_OBJECT

public:
    // The back end is not owned. No worker may run while the window is open, except the window's own.
    HistoryDialog(YumIO* backEnd, QWidget* parent);

    // Why nothing can be undone at this time, beside the reasons that the back end knows; usually empty.
    void setRefusal(const QString& text) { refusal = text; }

    // What the user wants, after exec() has returned QDialog::Accepted.
    Replay wantedReplay() const { return wanted; }
    qint64 wantedNumber() const { return number; }

    void done(int result) override;

protected:
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private Q_SLOTS:
    void load();
    void currentChanged();
    void describe();
    void undoThis();
    void undoAllSince();
    void redo();

private:
    void choose(Replay kind);
    void updateButtons();
    void showDetails(const QString& text);

    YumIO* yumIO;
    HistoryModel* model;
    FilteredList* list;
    HTextEdit* details;
    PlainLabel* faultLabel;
    QPushButton* undoButton;
    QPushButton* sinceButton;
    QPushButton* redoButton;
    QTimer describeTimer;         // runs shortly after another row has become current
    QHash<qint64, QString> known; // the details that were read since the window opened
    QString refusal;
    QString fault; // why nothing can be undone
    Replay wanted;
    qint64 number;
    bool working;        // a worker of this window runs
    int closeResult;     // done() was called meanwhile with this result; -1 otherwise
    qint64 newestBefore; // the newest transaction when the window was last opened
};

#endif
