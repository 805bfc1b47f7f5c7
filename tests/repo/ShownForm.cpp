// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/repo/ShownForm.h"

Repo::Entry ShownForm::usual()
{
    Repo::Entry entry;
    entry.id = QStringLiteral("updates");
    entry.name = QStringLiteral("Updates & more <b>");
    entry.baseurl = QStringLiteral("http://h/one\nhttp://h/two");
    entry.mirrorlist = QStringLiteral("http://h/mirrors");
    entry.enabled = 2;
    entry.gpgcheck = 0;
    entry.options = QStringLiteral("metadata_expire=6h\n# note\n");
    entry.file = QStringLiteral("/etc/yum.repos.d/updates.repo");
    entry.position = 3.0;
    return entry;
}

Repo::Entry ShownForm::vantor() const
{
    Repo::Entry entry = usual();
    entry.baseurl = vantorUrl + QStringLiteral("\nhttp://k/vantor?user=bob&word=secret&path=y");
    entry.mirrorlist = QStringLiteral("http://m/vantor?user=bob&word=secret&path=/list");
    return entry;
}

Repo::Entry ShownForm::withPasswords()
{
    Repo::Entry entry = usual();
    entry.baseurl = QStringLiteral("http://joe:secret@h/x\nhttp://h/?password=secret&x=y");
    entry.mirrorlist = QStringLiteral("https://joe:secret@m/");
    entry.options =
        QStringLiteral("proxy=http://me:secret@p:3120\nproxy_username=me\nproxy_password = secret\n"
                       "username=joe\npassword=secret\n  secret\nretries=1\n");
    return entry;
}

bool ShownForm::sameFields(const Repo::Entry& left, const Repo::Entry& right)
{
    return left.id == right.id && left.name == right.name && left.baseurl == right.baseurl &&
           left.mirrorlist == right.mirrorlist && left.enabled == right.enabled &&
           left.gpgcheck == right.gpgcheck && left.options == right.options && left.file == right.file &&
           qAbs(left.position - right.position) < 1e-9;
}

QString ShownForm::status(bool* shown) const
{
    const bool any = config->setStatus(conf.get(), label.get());
    if (shown != nullptr) {
        *shown = any;
    }
    return label->text();
}

void ShownForm::initTestCase()
{
    root = std::make_unique<QTemporaryDir>();
    managedRoot.set(QFile::encodeName(root->path()));
}

void ShownForm::init()
{
    conf = std::make_unique<YumConfIO>(requests, session);
    conf->reposdir = QStringList{QStringLiteral("/etc/yum.repos.d"), QStringLiteral("/etc/yum/repos.d")};
    window = std::make_unique<QWidget>();
    auto* layout = new QGridLayout(window.get());
    config = new RepoEditor::Config(layout);
    form = std::make_unique<Form>(window.get());
    label = std::make_unique<HFrameLabel>();
    window->show();
    QApplication::setActiveWindow(window.get());
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    changes = std::make_unique<QSignalSpy>(config, SIGNAL(changed()));
}

void ShownForm::cleanup()
{
    changes.reset();
    label.reset();
    form.reset();
    window.reset();
    conf.reset();
}
