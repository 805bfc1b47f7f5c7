// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/repo/ShownEditor.h"

#include "widgets/HFrameLabel.h"

using namespace RepoEditor;

int ShownEditor::run(const Use& use)
{
    bool used = false;
    QTimer::singleShot(0, dialog.get(), [this, &use, &used] {
        used = waitForFocus(dialog.get());
        use();
        if (dialog->isVisible()) {
            const AnsweringUser dropsChanges(AnsweringUser::clickIfThere(QStringLiteral("Yes")));
            dialog->close();
        }
    });
    const int result = dialog->exec();
    used = waitForFocus(window.get()) && used;
    return used ? result : -1;
}

bool ShownEditor::withForm(const Use& open, const Use& use)
{
    bool used = false;
    QTimer timer;
    connect(&timer, &QTimer::timeout, &timer, [this, &timer, &use, &used] {
        if (form->isVisible()) {
            timer.stop();
            used = waitForFocus(form);
            use();
            if (form->isVisible()) {
                clickForm("Cancel");
            }
        }
    });
    timer.start(5);
    open(); // opens the form, and returns when the form is closed
    return used && waitForFocus(dialog.get());
}

QList<ShownBox> ShownEditor::withBoxes(const Use& open, const char* button)
{
    QList<ShownBox> seen;
    {
        AnsweringUser user(AnsweringUser::clickIfThere(QLatin1String(button)));
        open();
        seen = user.seen;
    }
    for (const ShownBox& box : qAsConst(seen)) {
        qInfo(
            "%s",
            qPrintable(box.text)); // many tests compare only the number of boxes, so the log shows the texts
    }
    if (dialog->isVisible() && !seen.isEmpty() && !waitForFocus(dialog.get())) {
        seen.append(ShownBox());
        seen.last().title = QStringLiteral("the focus does not come back");
    }
    return seen;
}

int ShownEditor::listedRow(const QString& id) const
{
    const int row = listed().indexOf(id);
    if (row < 0) {
        qFatal("the repository %s is missing", qPrintable(id));
    }
    return row;
}

QPoint ShownEditor::place(const QString& id, int column) const
{
    const QRect cell = view->visualRect(view->QTableView::model()->index(listedRow(id), column));
    return QPoint(cell.left() + 10, cell.center().y());
}

void ShownEditor::click(const QString& id, int column, Qt::KeyboardModifiers modifiers) const
{
    QTest::mouseClick(dialog->windowHandle(), Qt::LeftButton, modifiers,
                      view->viewport()->mapTo(dialog.get(), place(id, column)));
}

QStringList ShownEditor::listed(int column) const
{
    QStringList ids;
    const QAbstractItemModel* rows = view->QTableView::model();
    for (int row = 0; row < rows->rowCount(); ++row) {
        ids << rows->index(row, column).data().toString();
    }
    return ids;
}

QStringList ShownEditor::ids() const
{
    QStringList result;
    for (const Repo::Entry& entry : qAsConst(conf->entries)) {
        result << entry.id;
    }
    return result;
}

const Repo::Entry& ShownEditor::entry(const QString& id) const
{
    const int row = ids().lastIndexOf(id);
    if (row < 0) {
        qFatal("the repository %s is missing", qPrintable(id));
    }
    return conf->entries.at(row);
}

QString ShownEditor::current() const
{
    const int row = view->currentRow();
    return row < 0 ? QStringLiteral("(none)") : conf->entries.at(row).id;
}

QString ShownEditor::status() const
{
    return dialog->findChild<HFrameLabel*>(QString(), Qt::FindDirectChildrenOnly)->text();
}

QColor ShownEditor::statusColor() const
{
    return dialog->findChild<HFrameLabel*>(QString(), Qt::FindDirectChildrenOnly)
        ->palette()
        .color(QPalette::Window);
}

bool ShownEditor::isClean() const
{
    return status().isEmpty() && !button("Apply")->isEnabled() && !button("Reset All")->isEnabled();
}

bool ShownEditor::isUnapplied() const
{
    return status() == QStringLiteral("Unapplied Configuration Changes") && button("Apply")->isEnabled() &&
           button("Reset All")->isEnabled();
}

void ShownEditor::initTestCase()
{
    backEnd = std::make_unique<BackEnd>();
    backEnd->collect(10);
}

void ShownEditor::init()
{
    backEnd->removeRepos();
    backEnd->putMain("[main]\nkeepcache=1\n");
    backEnd->putRepo("os.repo", "[os]\nname=System\nbaseurl=http://h/os\n\n"
                                "[extras]\nname=Extras\nbaseurl=http://h/extras\nenabled=0\n");
    backEnd->putRepo("updates.repo", "[updates]\nname=Updates\nbaseurl=http://h/updates\nenabled=1\n");
    session.clear();
    conf = std::make_unique<YumConfIO>(requests, session);
    window = std::make_unique<QWidget>();
    window->resize(200, 100);
    window->show();
    QVERIFY(waitForFocus(window.get()));
    dialog = std::make_unique<Dialog>(&backEnd->yumIO, conf.get(), window.get());
    view = dialog->findChild<View*>();
    form = dialog->findChild<ConfigDialog*>();
    fields = std::make_unique<Form>(form);
    reposChangedSpy = std::make_unique<QSignalSpy>(dialog.get(), SIGNAL(reposChanged()));
}

void ShownEditor::cleanup()
{
    reposChangedSpy.reset();
    fields.reset();
    dialog.reset();
    window.reset();
    conf.reset();
}

void ShownEditor::cleanupTestCase()
{
    backEnd.reset();
}
