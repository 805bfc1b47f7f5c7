// What is expected of both masking edits. The test of each says how that edit is handled, and adds what it
// has by itself.

#ifndef TESTS_REPO_PASSWDEDITTEST_H
#define TESTS_REPO_PASSWDEDITTEST_H

#include <QSignalSpy>
#include <QtTest>
#include <QtWidgets>

#include <memory>

class PasswdEditTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void thePasswordIsMasked();
    void whatDoesNotMatchIsShown();
    void everyPasswordOfAUrlIsMasked();
    void theHiddenEditIsLikeTheShownOne();
    void theHiddenEditFollowsToAnotherParent();
    void theHiddenEditIsDeletedToo();
    void itAcceptsNoDropsAndHasNoMenu();
    void changesAreTold();
    void aChangeThatDoesNotShowIsToldToo();

    void typingIntoThePassword();
    void typingOverASelectedPartOfThePassword();
    void backspaceAndDelete();
    void wordsAreDeletedAsTheyAreShown();
    void theCursorGoesThroughThePasswordCharacterByCharacter();
    void theSelectionStaysWhereTheUserMadeIt();
    void undoAndRedo();
    void undoneTextIsMasked();
    void aClickSetsTheCursor();
    void draggingSelects();
    void aDoubleClickSelectsWhatItShows();
    void clicksAreRightInAScrolledText();
    void surrogatePairsAreNotTornApart();
    void randomEditingKeepsTheRealText();
    void randomEditingCanBeUndone();

    void pastingGoesIntoTheRealText();
    void whatIsCopiedIsMaskedForOthers();
    void cutAndPasteKeepThePassword();
    void theSelectionIsMaskedForOthers();
    void theMiddleButtonPastesTheSelection();

    void composedTextGoesIntoTheRealText();
    void composingReplacesTheSelection();
    void theInputMethodMayReplaceText();
    void theInputMethodIsNotToldThePassword();

    void assistiveProgramsAreNotToldThePassword();
    void assistiveProgramsMayEdit();
    void settingTheShownTextSetsTheRealText();
    void escapeReachesTheWindowOnce();

protected:
    // In the text that every test begins with, there is a password at this place...
    static constexpr int passwordBegin = 24;
    static const QString password;
    // ...and it is this text; the other one is as it is to be shown.
    virtual QString textWith(const QString& insertedPassword) const = 0;
    QString maskedWith(int passwordLength) const;
    QString text() const { return textWith(password); }
    QString maskedText() const { return maskedWith(password.size()); }
    // A text that has to be scrolled, in which "secret" stands.
    virtual QString longText() const = 0;

    // Both are children of the window, if that is not null.
    virtual QWidget* makeEdit(QWidget* window) const = 0;
    virtual QWidget* makeOrdinaryEdit(QWidget* window) const = 0;
    virtual QString realTextOf(const QWidget* of) const = 0;
    virtual void setRealText(QWidget* of, const QString& real) const = 0;
    virtual const char* changeSignal() const = 0;

    // Also of the ordinary and the hidden edit.
    virtual QList<QWidget*> editsIn(const QWidget* window) const = 0;
    virtual QString textOf(const QWidget* of) const = 0;
    virtual void setText(QWidget* of, const QString& shown) const = 0;
    virtual int positionOf(const QWidget* of) const = 0;
    virtual int anchorOf(const QWidget* of) const = 0;
    virtual bool hasLines() const = 0;
    // With these Home and End go to the begin and the end of the text.
    Qt::KeyboardModifiers wholeText() const { return hasLines() ? Qt::ControlModifier : Qt::NoModifier; }

    // What gets the mouse events, and the place in it of a position in the text.
    virtual QWidget* mouseTarget() const = 0;
    virtual QPoint placeOf(int position) const = 0;

    QString realText() const { return realTextOf(edit); }
    void setRealText(const QString& real) const { setRealText(edit, real); }
    QString shownText() const { return textOf(edit); }
    QString selectedText() const;
    int position() const { return positionOf(edit); }
    QWidget* hiddenEdit() const;
    void compareReal(const QString& insertedPassword) const;

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, int times = 1) const;
    void press(QKeySequence::StandardKey key, int times = 1) const;
    void type(const QString& typed) const { QTest::keyClicks(edit, typed); }
    void goTo(int position) const;
    void click(int position, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier) const;
    void drag(int from, int to) const;
    void compose(const QString& preedit) const;
    void commit(const QString& committed, int replaceFrom = 0, int replaceLength = 0) const;

    std::unique_ptr<QWidget> window;
    QWidget* edit = nullptr;
    std::unique_ptr<QSignalSpy> changes;
};

#endif
