// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/packagetable/ShownDescription.h"

#include "tests/yumio/YumIOProbe.h"

void ShownDescription::initTestCase()
{
    table = std::make_unique<Table>();
}

void ShownDescription::init()
{
    conf = std::make_unique<YumConfIO>(requests, session);
    window = std::make_unique<QWidget>();
    window->resize(300, 200);
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    dialog = std::make_unique<Dialog>(window.get());
    table->standIn.setHeld(false);
    table->standIn.letChangeLogsBeRead(false);
}

void ShownDescription::cleanup()
{
    dialog.reset();
    window.reset();
    conf.reset();
}

void ShownDescription::cleanupTestCase()
{
    table.reset();
}

void ShownDescription::describe(const QString& name, const std::function<void(Dialog&)>& use)
{
    QVERIFY(withDialog<Dialog>(
        [this, name] {
            dialog->config(&table->yumIO, table->entry(name), conf.get());
            dialog->exec();
        },
        use));
}

void ShownDescription::available(const QJsonObject& attributes)
{
    table->collect({}, {}, {S::package("it", attributes)});
}

void ShownDescription::installed(const QJsonObject& attributes)
{
    QJsonObject all = attributes;
    all.insert("repoid", "@System");
    table->collect({}, {S::package("it", all)}, {});
}

void ShownDescription::repo(const QString& id, const QString& name, const QString& urls,
                            const QString& mirrorList)
{
    Repo::Entry entry;
    entry.id = id;
    entry.name = name;
    entry.baseurl = urls;
    entry.mirrorlist = mirrorList;
    conf->entries.append(entry);
}

QStringList ShownDescription::textBehind(QPushButton* button)
{
    QStringList found;
    withDialog<TextDialog>([button] { press(button); },
                           [&found](TextDialog& shown) {
                               found << shown.windowTitle() << shown.findChild<QTextEdit*>()->toPlainText();
                           });
    return found;
}

void ShownDescription::setLoaded(bool fileLists, bool otherData)
{
    table->yumIO.*(&YumIOProbe::fileListsLoaded) = fileLists;
    table->yumIO.*(&YumIOProbe::otherDataLoaded) = otherData;
}
