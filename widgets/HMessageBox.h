// A message box for texts that come from packages, servers and failures: plain text, never markup, and wide
// enough for the longest of its words, as far as the screen has room for it.
//
// Graphical thread; owned by whoever runs it, and by its Qt parent.

#ifndef WIDGETS_HMESSAGEBOX_H
#define WIDGETS_HMESSAGEBOX_H

#include <QMessageBox>

class HMessageBox : public QMessageBox
{
    Q_OBJECT

public:
    HMessageBox(Icon icon, const QString& title, const QString& text, StandardButtons buttons,
                QWidget* parent);

protected:
    bool event(QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void widen();
};

#endif
