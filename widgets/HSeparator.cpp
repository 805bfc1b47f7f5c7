#include "widgets/HSeparator.h"

HSeparator::HSeparator(QWidget* parent) : QFrame(parent)
{
    setFrameStyle(QFrame::HLine | QFrame::Sunken);
}
