// SPDX-License-Identifier: GPL-2.0-or-later

// The tests that both masking edits have in common. A derived class supplies the edit, and adds tests.

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
    void aTextWithoutAPasswordIsShownUnmasked();
    void everyPasswordOfAUrlIsMasked();
    void theHiddenEditHasTheGeometryAndTheFontAndTheParentOfTheShownEdit();
    void theHiddenEditFollowsTheShownEditToANewParent();
    void theHiddenEditIsDeletedWithTheShownEdit();
    void theShownEditAcceptsNoDropsAndHasNoContextMenu();
    void aSignalReportsEachChangeOfTheText();
    void aChangeIsSignalledEvenIfTheShownTextIsUnchanged();

    void typedTextIsInsertedIntoThePassword();
    void typedTextReplacesASelectedPartOfThePassword();
    void theBackspaceAndDeleteKeysChangeThePassword();
    void controlDeleteRemovesOneWordOfTheMaskedText();
    void theCursorGoesThroughThePasswordCharacterByCharacter();
    void pressingAFunctionKeyKeepsTheSelection();
    void undoAndRedoRestoreThePassword();
    void undoMasksTheRestoredPassword();
    void aClickMovesTheCursorToTheClickedCharacter();
    void draggingTheMouseSelectsText();
    void aDoubleClickSelectsTheVisibleWord();
    void aClickInAScrolledTextMovesTheCursorToTheClickedCharacter();
    void typingAndDeletingNeverSplitASurrogatePair();
    void randomEditingHasTheSameResultAsInAnOrdinaryEdit();
    void undoRestoresTheTextBeforeRandomEditing();

    void pastedTextIsInsertedIntoThePassword();
    void copiedPasswordsAreMaskedOnTheClipboard();
    void cuttingAndPastingWithinOneEditKeepsThePassword();
    void selectedPasswordsAreMaskedInThePrimarySelection();
    void theMiddleButtonPastesTheSelection();

    void textFromAnInputMethodIsInsertedIntoThePassword();
    void textFromAnInputMethodReplacesTheSelectedText();
    void anInputMethodCanReplaceTextNextToTheCursor();
    void theInputMethodDoesNotGetThePassword();

    void assistiveProgramsDoNotGetThePassword();
    void assistiveProgramsCanEditTheText();
    void settingTheTextOfTheShownEditAlsoSetsTheRealText();
    void oneEscapeKeyPressFinishesTheDialogOnlyOnce();

protected:
    // The position of the password in the text with which every test starts.
    static constexpr int passwordBegin = 24;
    static const QString password;
    // The text of the tests, with another password at `passwordBegin`. If the text has a second password, the
    // second password is unchanged.
    virtual QString textWith(const QString& insertedPassword) const = 0;
    QString maskedWith(int passwordLength) const;
    QString text() const { return textWith(password); }
    QString maskedText() const { return maskedWith(password.size()); }
    // A text that contains "secret" and does not fit into the visible part of the edit.
    virtual QString longText() const = 0;

    // makeEdit() returns a masking edit, and makeOrdinaryEdit() an edit of Qt. The window, which may be null,
    // becomes the parent of the edit.
    virtual QWidget* makeEdit(QWidget* window) const = 0;
    virtual QWidget* makeOrdinaryEdit(QWidget* window) const = 0;
    virtual QString realTextOf(const QWidget* of) const = 0;
    virtual void setRealText(QWidget* of, const QString& real) const = 0;
    virtual const char* changeSignal() const = 0;

    // The following functions with the parameter `of` accept the masking edit, its hidden edit and the
    // ordinary edit.
    virtual QList<QWidget*> editsIn(const QWidget* window) const = 0;
    virtual QString textOf(const QWidget* of) const = 0;
    virtual void setText(QWidget* of, const QString& shown) const = 0;
    virtual int positionOf(const QWidget* of) const = 0;
    virtual int anchorOf(const QWidget* of) const = 0;
    virtual bool hasLines() const = 0;
    // The modifier keys with which Home and End move to the beginning and to the end of the whole text.
    Qt::KeyboardModifiers wholeText() const { return hasLines() ? Qt::ControlModifier : Qt::NoModifier; }

    // The widget inside the edit that receives the mouse events.
    virtual QWidget* mouseTarget() const = 0;
    // The point in mouseTarget() at this position of the text.
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
