// SPDX-License-Identifier: GPL-2.0-or-later

// The history window. It lists all transactions, shows the details of the current transaction, and has
// buttons that undo and repeat transactions.
//
// Whenever the window opens, the list is empty until a worker has read the transactions. Shortly after a
// transaction has become current, a worker reads its details. While a worker reads details, the user can
// select another transaction. The window does not change the system: a button closes the window, and then the
// main window carries out the user's request.
//
// The object lives on the graphical thread. The main window creates it on the first request and owns it.

#ifndef HISTORY_HISTORYDIALOG_H
#define HISTORY_HISTORYDIALOG_H

#include <QDialog>
#include <QHash>
#include <QPointer>
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
    // The main window owns the back end. While this window is open, only workers that this window starts may
    // run.
    HistoryDialog(YumIO* backEnd, QWidget* parent);

    // Sets a reason why no transaction can be undone now, in addition to the reasons that the back end knows.
    // An empty string means that no such reason exists.
    void setRefusal(const QString& text) { refusal = text; }

    // Returns the kind of the user's request. Call this function only after exec() has returned
    // QDialog::Accepted.
    Replay wantedReplay() const { return wanted; }
    // Returns the number of the transaction that the request names. Call this function only after exec() has
    // returned QDialog::Accepted.
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

    QPointer<YumIO> yumIO; // the back end; null after the program has begun to end
    HistoryModel* model;
    FilteredList* list;
    HTextEdit* details;
    PlainLabel* faultLabel;
    QPushButton* undoButton;
    QPushButton* sinceButton;
    QPushButton* redoButton;
    QTimer describeTimer;         // fires shortly after another row has become current
    QHash<qint64, QString> known; // the details that were read since the window was opened
    QString refusal;
    QString fault; // the reason why no transaction can be undone, or empty
    Replay wanted;
    qint64 number;
    bool working;       // true while a worker of this window runs
    int closeResult;    // the argument of done() if done() was called while a worker ran; otherwise -1
    bool columnsFitted; // true after the columns have been fitted to a list with transactions
    qint64 keptNumber;  // after the list is read, this transaction becomes current; 0 means the newest
};

#endif
