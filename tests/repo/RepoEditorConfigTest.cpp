#include "repo/RepoEditorConfig.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>

#include "app/base/ManagedRoot.h"
#include "repo/YumConfIO.h"
#include "tests/repo/Assistive.h"
#include "tests/repo/Form.h"
#include "widgets/Colors.h"
#include "widgets/HFrameLabel.h"

namespace {

const QString vantorUrl = QStringLiteral("http://h/vantor?user=bob&word=secret&path=/x");

Repo::Entry usual()
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

Repo::Entry vantor()
{
    Repo::Entry entry = usual();
    entry.baseurl = vantorUrl + QStringLiteral("\nhttp://k/vantor?user=bob&word=secret&path=y");
    entry.mirrorlist = QStringLiteral("http://m/vantor?user=bob&word=secret&path=/list");
    return entry;
}

Repo::Entry withPasswords()
{
    Repo::Entry entry = usual();
    entry.baseurl = QStringLiteral("http://joe:secret@h/x\nhttp://h/?password=secret&x=y");
    entry.mirrorlist = QStringLiteral("https://joe:secret@m/");
    entry.options =
        QStringLiteral("proxy=http://me:secret@p:3120\nproxy_username=me\nproxy_password = secret\n"
                       "username=joe\npassword=secret\n  secret\nretries=1\n");
    return entry;
}

bool sameFields(const Repo::Entry& left, const Repo::Entry& right)
{
    return left.id == right.id && left.name == right.name && left.baseurl == right.baseurl &&
           left.mirrorlist == right.mirrorlist && left.enabled == right.enabled &&
           left.gpgcheck == right.gpgcheck && left.options == right.options && left.file == right.file &&
           qAbs(left.position - right.position) < 1e-9;
}

} // namespace

class RepoEditorConfigTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void itIsBlankAtFirst();
    void theFieldsHaveTheirLabels();
    void theBoxesHaveThreeItems();
    void theDefaultsAreTold_data();
    void theDefaultsAreTold();
    void theSortPositionGoesInWholeSteps();

    void anEntryFillsTheFields();
    void fillingTellsNoChange();
    void whatWasFilledInComesBack_data();
    void whatWasFilledInComesBack();
    void everyChangeIsToldAndComesBack();
    void optionsAreStoredAsTyped();
    void onlyTheChangedFieldLosesItsPeculiarities();
    void pastedIdentifiersAreOneLine();

    void credentialsAreShownInTheirFields();
    void theFieldsAreOffWithoutCredentials();
    void theMirrorListMayHaveTheCredentials();
    void aUrlThatIsTypedBringsTheFieldsToLife();
    void aPasswordThatIsChangedWithinTheUrlIsFollowed();
    void typingAPasswordChangesEveryUrl();
    void typingANameChangesEveryUrl();
    void typingCredentialsKeepsTheCursor();
    void emptyKeysFallBack();
    void keysAreNeverRichTextOrShortcuts();
    void thePasswordStandsNowhereInClear();
    void passwordsInTheUrlsAndTheOptionsAreMasked();
    void optionsWithAPasswordAreEdited();
    void longTextsDoNotHangTheForm();
    void assistiveProgramsAreNotToldThePassword();

    void theStatus_data();
    void theStatus();
    void whatAFileWouldNotGiveBackIsRefused_data();
    void whatAFileWouldNotGiveBackIsRefused();
    void theMainConfigurationFileIsAlwaysRight();
    void blankingAndFillingAgain();

private:
    QString status(bool* shown = nullptr) const
    {
        const bool any = config->setStatus(conf.get(), label.get());
        if (shown != nullptr) {
            *shown = any;
        }
        return label->text();
    }

    std::unique_ptr<QTemporaryDir> root;
    QList<YumRepoEnabled> requests;
    QHash<QString, bool> session;
    std::unique_ptr<YumConfIO> conf;
    std::unique_ptr<QWidget> window;
    RepoEditor::Config* config = nullptr;
    std::unique_ptr<Form> form;
    std::unique_ptr<HFrameLabel> label;
    std::unique_ptr<QSignalSpy> changes;
};

void RepoEditorConfigTest::initTestCase()
{
    root = std::make_unique<QTemporaryDir>();
    qputenv("VYREROOT", QFile::encodeName(root->path()));
}

void RepoEditorConfigTest::init()
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

void RepoEditorConfigTest::cleanup()
{
    changes.reset();
    label.reset();
    form.reset();
    window.reset();
    conf.reset();
}

void RepoEditorConfigTest::itIsBlankAtFirst()
{
    config->disable();
    QVERIFY(sameFields(config->toEntry(), Repo::Entry()));
    for (const QWidget* field : form->fields()) {
        QVERIFY2(!field->isEnabled(), qPrintable(field->toolTip()));
    }
    QCOMPARE(form->authNameLabel->text(), QStringLiteral("Name"));
    QCOMPARE(form->passwordLabel->text(), QStringLiteral("Password"));
    QCOMPARE(changes->size(), 0);
}

void RepoEditorConfigTest::theFieldsHaveTheirLabels()
{
    QStringList labels;
    for (const QLabel* each : window->findChildren<QLabel*>()) {
        labels << each->text();
        QVERIFY(each->isVisible());
    }
    QCOMPARE(labels.size(), 11);
    for (const char* text : {"Identifier", "Name", "URLs", "Mirror list URL", "Password",
                             "Other Options:", "Enabled", "Check GPG Keys", "File", "Sort Position"}) {
        QVERIFY2(labels.contains(QLatin1String(text)), text);
    }
    QCOMPARE(labels.count(QStringLiteral("Name")), 2);
    QStringList groups;
    for (const QGroupBox* each : window->findChildren<QGroupBox*>()) {
        groups << each->title();
    }
    QCOMPARE(groups,
             (QStringList{"Vantor Authentication", "Repository Options", "Configuration File (expert)"}));
    QVERIFY(window->findChildren<QGroupBox*>().at(0)->isAncestorOf(form->password));
    QVERIFY(window->findChildren<QGroupBox*>().at(1)->isAncestorOf(form->gpgcheck));
    QVERIFY(window->findChildren<QGroupBox*>().at(2)->isAncestorOf(form->position));
    QCOMPARE(form->password->echoMode(), QLineEdit::Password);
}

void RepoEditorConfigTest::theBoxesHaveThreeItems()
{
    for (const QComboBox* box : {form->enabled, form->gpgcheck}) {
        QCOMPARE(box->count(), 3);
        QCOMPARE(box->itemText(0), QStringLiteral("No"));
        QCOMPARE(box->itemText(1), QStringLiteral("Default"));
        QCOMPARE(box->itemText(2), QStringLiteral("Yes"));
        QVERIFY(!box->isEditable());
    }
}

void RepoEditorConfigTest::theDefaultsAreTold_data()
{
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<bool>("gpgcheck");
    QTest::addColumn<QStringList>("texts");
    QTest::newRow("yes, no") << true << false << QStringList{"Default (Yes)", "Default (No)"};
    QTest::newRow("no, yes") << false << true << QStringList{"Default (No)", "Default (Yes)"};
}

void RepoEditorConfigTest::theDefaultsAreTold()
{
    QFETCH(bool, enabled);
    QFETCH(bool, gpgcheck);
    config->setEntry(Repo::Entry());
    config->setDefaults(enabled, gpgcheck);
    QTEST((QStringList{form->enabled->currentText(), form->gpgcheck->currentText()}), "texts");
    QCOMPARE(form->enabled->itemText(0), QStringLiteral("No"));
    QCOMPARE(form->enabled->itemText(2), QStringLiteral("Yes"));
    QCOMPARE(config->toEntry().enabled, 1);
    QCOMPARE(config->toEntry().gpgcheck, 1);
    QCOMPARE(changes->size(), 0);
}

void RepoEditorConfigTest::theSortPositionGoesInWholeSteps()
{
    QCOMPARE(form->position->decimals(), 1);
    QCOMPARE(form->position->singleStep(), 1.0);
    QCOMPARE(form->position->minimum(), 0.0);
    QCOMPARE(form->position->value(), 0.0);
    config->setEntry(usual());
    QTest::keyClick(form->position, Qt::Key_Up);
    QCOMPARE(config->toEntry().position, 4.0);
    Form::type(form->position->findChild<QLineEdit*>(), QStringLiteral("1.5"));
    QCOMPARE(config->toEntry().position, 1.5);
}

void RepoEditorConfigTest::anEntryFillsTheFields()
{
    config->setEntry(usual());
    QCOMPARE(form->id->text(), usual().id);
    QCOMPARE(form->name->text(), usual().name);
    QCOMPARE(form->urls->realPlainText(), usual().baseurl);
    QCOMPARE(form->urls->toPlainText(), usual().baseurl);
    QCOMPARE(form->mirrorList->realText(), usual().mirrorlist);
    QCOMPARE(form->enabled->currentIndex(), 2);
    QCOMPARE(form->gpgcheck->currentIndex(), 0);
    QCOMPARE(form->options->toPlainText(), usual().options);
    QCOMPARE(form->file->text(), usual().file);
    QCOMPARE(form->position->value(), 3.0);
    for (const QWidget* field : form->fields()) {
        QCOMPARE(field->isEnabled(), field != form->authName && field != form->password);
    }
}

void RepoEditorConfigTest::fillingTellsNoChange()
{
    config->setEntry(vantor());
    config->setEntry(usual());
    config->disable();
    QCOMPARE(changes->size(), 0);
}

void RepoEditorConfigTest::whatWasFilledInComesBack_data()
{
    QTest::addColumn<QString>("options");
    QTest::addColumn<QString>("url");
    QTest::addColumn<double>("position");
    QTest::newRow("usual") << usual().options << usual().baseurl << 1.0;
    QTest::newRow("credentials") << usual().options << vantor().baseurl << 1.0;
    QTest::newRow("carriage returns") << "a=b\r\nc=d\r\n"
                                      << "http://h/x\r" << 1.0;
    QTest::newRow("continued options") << "a=b\n\tc\n  d\n"
                                       << "http://h/x" << 1.0;
    QTest::newRow("bytes of an accented letter")
        << QString::fromLatin1("#voil\xc3\xa0\n") << "http://h/x" << 1.0;
    QTest::newRow("a finer position") << usual().options << "http://h/x" << 1.25;
    QTest::newRow("a large position") << usual().options << "http://h/x" << 250.0;
    QTest::newRow("separators") << QString(QChar(0x2028)) + QChar(0x2029) << "http://h/x" << 0.0;
}

void RepoEditorConfigTest::whatWasFilledInComesBack()
{
    QFETCH(QString, options);
    QFETCH(QString, url);
    QFETCH(double, position);
    Repo::Entry entry = usual();
    entry.options = options;
    entry.baseurl = url;
    entry.position = position;
    entry.name = QString(40000, QLatin1Char('n')) + QStringLiteral("\n continued\r");
    entry.mirrorlist = QString(40000, QLatin1Char('m'));
    config->setEntry(entry);
    QVERIFY(sameFields(config->toEntry(), entry));
}

void RepoEditorConfigTest::everyChangeIsToldAndComesBack()
{
    config->setEntry(usual());
    Repo::Entry expected = usual();
    const auto typed = [this](QWidget* field, const QString& text) {
        changes->clear();
        field->setFocus();
        QTest::keyClick(field, Qt::Key_End);
        QTest::keyClicks(field, text);
        QCOMPARE(changes->size(), text.size());
    };
    typed(form->id, QStringLiteral("-2"));
    expected.id += QStringLiteral("-2");
    typed(form->name, QStringLiteral("!"));
    expected.name += QLatin1Char('!');
    typed(form->urls, QStringLiteral("x"));
    expected.baseurl = QStringLiteral("http://h/onex\nhttp://h/two");
    typed(form->mirrorList, QStringLiteral("yz"));
    expected.mirrorlist += QStringLiteral("yz");
    typed(form->options, QStringLiteral("0"));
    expected.options = QStringLiteral("metadata_expire=6h0\n# note\n");
    typed(form->file, QStringLiteral("x"));
    expected.file += QLatin1Char('x');
    changes->clear();
    form->enabled->setFocus();
    QTest::keyClick(form->enabled, Qt::Key_Up);
    QCOMPARE(changes->size(), 1);
    expected.enabled = 1;
    QTest::keyClick(form->gpgcheck, Qt::Key_Down);
    QCOMPARE(changes->size(), 2);
    expected.gpgcheck = 1;
    QTest::keyClick(form->position, Qt::Key_Down);
    QCOMPARE(changes->size(), 3);
    expected.position = 2.0;
    QVERIFY(sameFields(config->toEntry(), expected));
}

void RepoEditorConfigTest::optionsAreStoredAsTyped()
{
    config->setEntry(Repo::Entry());
    Form::type(form->options, QStringLiteral("a=b\n\n c=<i>d"));
    QCOMPARE(config->toEntry().options, QStringLiteral("a=b\n\n c=<i>d"));
}

void RepoEditorConfigTest::onlyTheChangedFieldLosesItsPeculiarities()
{
    Repo::Entry entry = usual();
    entry.options = QString::fromLatin1("a=b\r\n#voil\xc3\xa0\n");
    entry.name = QStringLiteral("Updates\r");
    config->setEntry(entry);
    form->options->setFocus();
    QTest::keyClick(form->options, Qt::Key_End, Qt::ControlModifier);
    QTest::keyClicks(form->options, QStringLiteral("c=d"));
    entry.options = QString::fromLatin1("a=b\n#voil\xc3\xa0\nc=d");
    QVERIFY(sameFields(config->toEntry(), entry));
}

void RepoEditorConfigTest::pastedIdentifiersAreOneLine()
{
    config->setEntry(Repo::Entry());
    QGuiApplication::clipboard()->setText(QStringLiteral("updates\n"));
    form->id->setFocus();
    QTest::keySequence(form->id, QKeySequence(QKeySequence::Paste));
    QCOMPARE(config->toEntry().id, QStringLiteral("updates"));
}

void RepoEditorConfigTest::credentialsAreShownInTheirFields()
{
    config->setEntry(vantor());
    QCOMPARE(form->authNameLabel->text(), QStringLiteral("user"));
    QCOMPARE(form->authName->text(), QStringLiteral("bob"));
    QCOMPARE(form->passwordLabel->text(), QStringLiteral("word"));
    QCOMPARE(form->password->text(), QStringLiteral("secret"));
    QVERIFY(form->authName->isEnabled());
    QVERIFY(form->password->isEnabled());
    QCOMPARE(form->urls->toPlainText(), QString::fromUtf8("http://h/vantor?user=bob&word=●●●●●●&path=/x\n"
                                                          "http://k/vantor?user=bob&word=●●●●●●&path=y"));
    QCOMPARE(form->mirrorList->text(), QString::fromUtf8("http://m/vantor?user=bob&word=●●●●●●&path=/list"));
    QVERIFY(sameFields(config->toEntry(), vantor()));
}

void RepoEditorConfigTest::theFieldsAreOffWithoutCredentials()
{
    config->setEntry(vantor());
    config->setEntry(usual());
    QCOMPARE(form->authNameLabel->text(), QStringLiteral("Name"));
    QCOMPARE(form->passwordLabel->text(), QStringLiteral("Password"));
    QVERIFY(form->authName->text().isEmpty());
    QVERIFY(form->password->text().isEmpty());
    QVERIFY(!form->authName->isEnabled());
    QVERIFY(!form->password->isEnabled());
}

void RepoEditorConfigTest::theMirrorListMayHaveTheCredentials()
{
    Repo::Entry entry = usual();
    entry.mirrorlist = vantorUrl;
    config->setEntry(entry);
    QCOMPARE(form->authName->text(), QStringLiteral("bob"));
    Form::type(form->password, QStringLiteral("new"));
    QCOMPARE(config->toEntry().mirrorlist, QStringLiteral("http://h/vantor?user=bob&word=new&path=/x"));
    QCOMPARE(config->toEntry().baseurl, usual().baseurl);
}

void RepoEditorConfigTest::aUrlThatIsTypedBringsTheFieldsToLife()
{
    config->setEntry(Repo::Entry());
    Form::type(form->urls, QStringLiteral("http://h/vantor?u=a%20b&p=pw&path"));
    QVERIFY(!form->authName->isEnabled());
    QTest::keyClicks(form->urls, QStringLiteral("="));
    QVERIFY(form->authName->isEnabled());
    QVERIFY(form->password->isEnabled());
    QCOMPARE(form->authNameLabel->text(), QStringLiteral("u"));
    QCOMPARE(form->authName->text(), QStringLiteral("a b"));
    QCOMPARE(form->password->text(), QStringLiteral("pw"));
    QTest::keyClick(form->urls, Qt::Key_Backspace);
    QVERIFY(!form->password->isEnabled());
    QVERIFY(form->password->text().isEmpty());
    QCOMPARE(form->passwordLabel->text(), QStringLiteral("Password"));
    Form::type(form->urls, QString());
    Form::type(form->mirrorList, QStringLiteral("http://h/vantor?u=eve&p=pw&path=/l"));
    QCOMPARE(form->authName->text(), QStringLiteral("eve"));
}

void RepoEditorConfigTest::aPasswordThatIsChangedWithinTheUrlIsFollowed()
{
    config->setEntry(vantor());
    form->urls->setFocus();
    QTest::keyClick(form->urls, Qt::Key_Home, Qt::ControlModifier);
    for (int i = 0; i < vantorUrl.indexOf(QStringLiteral("secret")); ++i) {
        QTest::keyClick(form->urls, Qt::Key_Right);
    }
    // What shows stays the same.
    QTest::keyClick(form->urls, Qt::Key_Right, Qt::ShiftModifier);
    QTest::keyClicks(form->urls, QStringLiteral("S"));
    QCOMPARE(form->password->text(), QStringLiteral("Secret"));
    QCOMPARE(changes->size(), 1);
    QVERIFY(config->toEntry().baseurl.startsWith(QStringLiteral("http://h/vantor?user=bob&word=Secret&")));
}

void RepoEditorConfigTest::typingAPasswordChangesEveryUrl()
{
    config->setEntry(vantor());
    changes->clear();
    form->password->setFocus();
    QTest::keyClick(form->password, Qt::Key_End);
    QTest::keyClicks(form->password, QStringLiteral("&1"));
    QCOMPARE(changes->size(), 2);
    QCOMPARE(config->toEntry().baseurl, QStringLiteral("http://h/vantor?user=bob&word=secret%261&path=/x\n"
                                                       "http://k/vantor?user=bob&word=secret%261&path=y"));
    QCOMPARE(config->toEntry().mirrorlist,
             QStringLiteral("http://m/vantor?user=bob&word=secret%261&path=/list"));
    // One password character for each character of the URL.
    QCOMPARE(form->urls->toPlainText(), QString::fromUtf8("http://h/vantor?user=bob&word=●●●●●●●●●●&path=/x\n"
                                                          "http://k/vantor?user=bob&word=●●●●●●●●●●&path=y"));
    QCOMPARE(form->mirrorList->text(),
             QString::fromUtf8("http://m/vantor?user=bob&word=●●●●●●●●●●&path=/list"));
    QCOMPARE(form->password->text(), QStringLiteral("secret&1"));
    Form::type(form->password, QString());
    QCOMPARE(config->toEntry().mirrorlist, QStringLiteral("http://m/vantor?user=bob&word=&path=/list"));
    QTest::keyClicks(form->password, QStringLiteral("x"));
    QCOMPARE(config->toEntry().mirrorlist, QStringLiteral("http://m/vantor?user=bob&word=x&path=/list"));
}

void RepoEditorConfigTest::typingANameChangesEveryUrl()
{
    config->setEntry(vantor());
    Form::type(form->authName, QStringLiteral("a b"));
    QCOMPARE(config->toEntry().baseurl, QStringLiteral("http://h/vantor?user=a%20b&word=secret&path=/x\n"
                                                       "http://k/vantor?user=a%20b&word=secret&path=y"));
    QCOMPARE(config->toEntry().mirrorlist,
             QStringLiteral("http://m/vantor?user=a%20b&word=secret&path=/list"));
    QCOMPARE(form->authName->text(), QStringLiteral("a b"));
    QCOMPARE(form->password->text(), QStringLiteral("secret"));
}

void RepoEditorConfigTest::typingCredentialsKeepsTheCursor()
{
    config->setEntry(vantor());
    form->authName->setFocus();
    QTest::keyClick(form->authName, Qt::Key_Home);
    QTest::keyClicks(form->authName, QStringLiteral("xy"));
    QCOMPARE(form->authName->text(), QStringLiteral("xybob"));
    QCOMPARE(form->authName->cursorPosition(), 2);
}

void RepoEditorConfigTest::emptyKeysFallBack()
{
    Repo::Entry entry = usual();
    entry.baseurl = QStringLiteral("http://h/vantor?=bob&=secret&path=/x");
    config->setEntry(entry);
    QCOMPARE(form->authNameLabel->text(), QStringLiteral("Name"));
    QCOMPARE(form->passwordLabel->text(), QStringLiteral("Password"));
    QCOMPARE(form->password->text(), QStringLiteral("secret"));
    QVERIFY(form->password->isEnabled());
}

void RepoEditorConfigTest::keysAreNeverRichTextOrShortcuts()
{
    Repo::Entry entry = usual();
    entry.baseurl = QStringLiteral("http://h/vantor?<b>u%26x</b>=bob&%26p=secret&path=/x");
    config->setEntry(entry);
    QCOMPARE(form->authNameLabel->text(), QStringLiteral("<b>u&x</b>"));
    QCOMPARE(form->authNameLabel->textFormat(), Qt::PlainText);
    QVERIFY(form->authNameLabel->buddy() == nullptr);
    QVERIFY(form->passwordLabel->buddy() == nullptr);
    const int width = window->minimumSizeHint().width();
    entry.baseurl =
        QStringLiteral("http://h/vantor?%1=bob&%1=secret&path=/x").arg(QString(500, QLatin1Char('k')));
    config->setEntry(entry);
    QVERIFY(window->minimumSizeHint().width() < width + 500);
}

void RepoEditorConfigTest::thePasswordStandsNowhereInClear()
{
    config->setEntry(vantor());
    config->setStatus(conf.get(), label.get());
    for (const QString& typed : {QString(), QStringLiteral("secret2")}) {
        if (!typed.isEmpty()) {
            Form::type(form->password, typed);
        }
        const QStringList texts = readableTexts(window.get()) + readableTexts(label.get());
        QVERIFY(texts.contains(form->urls->toPlainText()));
        for (const QString& text : texts) {
            QVERIFY2(!text.contains(QStringLiteral("secret")), qPrintable(text));
        }
    }
    // Nor does undoing bring it there.
    form->password->setFocus();
    QTest::keySequence(form->password, QKeySequence(QKeySequence::Undo));
    form->urls->setFocus();
    QTest::keySequence(form->urls, QKeySequence(QKeySequence::Undo));
    for (const QString& text : readableTexts(window.get())) {
        QVERIFY2(!text.contains(QStringLiteral("secret")), qPrintable(text));
    }
}

void RepoEditorConfigTest::passwordsInTheUrlsAndTheOptionsAreMasked()
{
    const Repo::Entry entry = withPasswords();
    config->setEntry(entry);
    QCOMPARE(form->urls->toPlainText(),
             QString::fromUtf8("http://joe:●●●●●●@h/x\nhttp://h/?password=●●●●●●&x=y"));
    QCOMPARE(form->mirrorList->text(), QString::fromUtf8("https://joe:●●●●●●@m/"));
    QCOMPARE(form->options->toPlainText(),
             QString::fromUtf8("proxy=http://me:●●●●●●@p:3120\nproxy_username=me\nproxy_password = ●●●●●●\n"
                               "username=joe\npassword=●●●●●●\n  ●●●●●●\nretries=1\n"));
    QVERIFY(sameFields(config->toEntry(), entry));
}

void RepoEditorConfigTest::optionsWithAPasswordAreEdited()
{
    Repo::Entry entry = withPasswords();
    entry.options = QStringLiteral("password=secret\nretries=1\n");
    config->setEntry(entry);
    form->options->setFocus();
    QTest::keyClick(form->options, Qt::Key_Home, Qt::ControlModifier);
    for (int i = 0; i < QStringLiteral("password=se").size(); ++i) {
        QTest::keyClick(form->options, Qt::Key_Right);
    }
    QTest::keyClicks(form->options, QStringLiteral("XY"));
    QCOMPARE(config->toEntry().options, QStringLiteral("password=seXYcret\nretries=1\n"));
    QCOMPARE(form->options->toPlainText(), QString::fromUtf8("password=●●●●●●●●\nretries=1\n"));
    QTest::keySequence(form->options, QKeySequence(QKeySequence::SelectAll));
    QTest::keySequence(form->options, QKeySequence(QKeySequence::Copy));
    QCOMPARE(QGuiApplication::clipboard()->text(), form->options->toPlainText());
    QTest::keySequence(form->options, QKeySequence(QKeySequence::Undo));
    QTest::keySequence(form->options, QKeySequence(QKeySequence::Undo));
    QVERIFY(sameFields(config->toEntry(), entry));
    Form::type(form->options, QStringLiteral("password: 12\na=b"));
    QCOMPARE(config->toEntry().options, QStringLiteral("password: 12\na=b"));
    QCOMPARE(form->options->toPlainText(), QString::fromUtf8("password: ●●\na=b"));
}

void RepoEditorConfigTest::longTextsDoNotHangTheForm()
{
    Repo::Entry entry = vantor();
    entry.baseurl += QLatin1Char('\n') + QStringLiteral("/vantor?").repeated(16000);
    entry.mirrorlist = QStringLiteral("/vantor?a=").repeated(16000);
    entry.options = QStringLiteral("password=/vantor?a=&://u:p@h/").repeated(3000);
    const auto typeAtEnd = [](QWidget* field) {
        field->setFocus();
        QTest::keyClick(field, Qt::Key_End, Qt::ControlModifier);
        QTest::keyClick(field, Qt::Key_End);
        QTest::keyClicks(field, QStringLiteral("x"));
    };
    QElapsedTimer timer;
    timer.start();
    config->setEntry(entry);
    typeAtEnd(form->password);
    typeAtEnd(form->mirrorList);
    typeAtEnd(form->options);
    QVERIFY2(timer.elapsed() < 20000, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(config->toEntry().baseurl.startsWith(
        QStringLiteral("http://h/vantor?user=bob&word=secretx&path=/x")));
}

void RepoEditorConfigTest::assistiveProgramsAreNotToldThePassword()
{
    told.clear();
    QAccessible::installUpdateHandler(noteTold);
    config->setEntry(withPasswords());
    Form::type(form->options, QStringLiteral("password=789"));
    config->setEntry(vantor());
    Form::type(form->password, QStringLiteral("789"));
    QAccessible::installUpdateHandler(nullptr);
    QVERIFY(toldAsExpected());
    QStringList texts = told;
    collectTexts(QAccessible::queryAccessibleInterface(window.get()), texts);
    QVERIFY(texts.contains(form->urls->toPlainText()));
    for (const QString& text : qAsConst(texts)) {
        QVERIFY2(!text.contains(QRegExp(QStringLiteral("secret|7|8|9"))), qPrintable(text));
    }
}

void RepoEditorConfigTest::theStatus_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("baseurl");
    QTest::addColumn<QString>("mirrorlist");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("background");
    const QString url = QStringLiteral("http://h/x");
    const QString good = QStringLiteral("/etc/yum.repos.d/x.repo");
    const QString warning = Colors::warningBg();
    QTest::newRow("nothing wrong") << "x" << url << "" << good << ""
                                   << "";
    QTest::newRow("second directory") << "x"
                                      << "" << url << "/etc/yum/repos.d/x.repo"
                                      << ""
                                      << "";
    QTest::newRow("no file") << "x" << url << ""
                             << ""
                             << ""
                             << "";
    QTest::newRow("no identifier") << ""
                                   << ""
                                   << ""
                                   << "/tmp/x"
                                   << "No Identifier specified" << Colors::errorBg();
    QTest::newRow("no URL") << "x"
                            << ""
                            << ""
                            << "/tmp/x"
                            << "No URLs or Mirror list URL specified" << warning;
    QTest::newRow("another directory") << "x" << url << ""
                                       << "/tmp/x.repo"
                                       << "File is not in any reposdir directory" << warning;
    QTest::newRow("another directory and no suffix") << "x" << url << ""
                                                     << "/tmp/x"
                                                     << "File is not in any reposdir directory" << warning;
    QTest::newRow("a directory that begins alike") << "x" << url << ""
                                                   << "/etc/yum.repos.d2/x.repo"
                                                   << "File is not in any reposdir directory" << warning;
    QTest::newRow("a directory of another case") << "x" << url << ""
                                                 << "/etc/Yum.repos.d/x.repo"
                                                 << "File is not in any reposdir directory" << warning;
    QTest::newRow("no suffix") << "x" << url << ""
                               << "/etc/yum.repos.d/x"
                               << "File lacks .repo suffix" << warning;
    QTest::newRow("no name") << "x"
                             << "http://h/vantor?u=&p=&path="
                             << "" << good << "No Vantor Authentication Name specified" << warning;
    QTest::newRow("no password") << "x"
                                 << "http://h/vantor?u=bob&p=&path="
                                 << "" << good << "No Vantor Authentication Password specified" << warning;
    QTest::newRow("no name in the mirror list") << "x" << url << "http://h/vantor?u=&p=pw&path=" << good
                                                << "No Vantor Authentication Name specified" << warning;
    QTest::newRow("credentials") << "x"
                                 << "http://h/vantor?u=bob&p=pw&path="
                                 << "" << good << ""
                                 << "";
    QTest::newRow("the URLs decide") << "x"
                                     << "http://h/vantor?u=bob&p=pw&path="
                                     << "http://h/vantor?u=&p=&path=" << good << ""
                                     << "";
}

void RepoEditorConfigTest::theStatus()
{
    QFETCH(QString, id);
    QFETCH(QString, baseurl);
    QFETCH(QString, mirrorlist);
    QFETCH(QString, file);
    QFETCH(QString, text);
    QFETCH(QString, background);
    Repo::Entry entry;
    entry.id = id;
    entry.baseurl = baseurl;
    entry.mirrorlist = mirrorlist;
    entry.file = file;
    config->setEntry(entry);
    bool shown = false;
    QCOMPARE(status(&shown), text);
    QCOMPARE(shown, !text.isEmpty());
    if (shown) {
        QCOMPARE(label->palette().color(QPalette::Window), QColor(background));
    }
}

void RepoEditorConfigTest::whatAFileWouldNotGiveBackIsRefused_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("options");
    QTest::addColumn<QString>("refusal");
    const char* characters = "Identifier has other characters than letters, digits and -_.:";
    QTest::newRow("closing bracket") << "a]b"
                                     << "" << characters;
    QTest::newRow("closing bracket at the end") << "a]"
                                                << "" << characters;
    QTest::newRow("opening bracket") << "[a"
                                     << "" << characters;
    QTest::newRow("line feed") << "a\n b"
                               << "" << characters;
    QTest::newRow("carriage return") << "a\r b"
                                     << "" << characters;
    QTest::newRow("accented letter") << QString::fromUtf8("\xc3\xa4") << "" << characters;
    QTest::newRow("the main section") << "main"
                                      << ""
                                      << "Identifier main is reserved for the main section";
    QTest::newRow("another section in the options") << "x"
                                                    << "a=b\n[y]\n"
                                                    << "Other Options have a line that begins with a bracket";
    QTest::newRow("a broken section in the options")
        << "x"
        << "[y"
        << "Other Options have a line that begins with a bracket";
    QTest::newRow("options that continue another") << "x"
                                                   << " a=b\n"
                                                   << "Other Options begin with a blank";
    QTest::newRow("options that begin with a tab") << "x"
                                                   << "\ta"
                                                   << "Other Options begin with a blank";
    QTest::newRow("blank") << "my repo"
                           << "" << characters;
    QTest::newRow("slash") << "a/b"
                           << "" << characters;
    QTest::newRow("number sign") << "a#b"
                                 << "" << characters;
    QTest::newRow("zero") << QString(QChar(0)) << "" << characters;
    QTest::newRow("other signs") << "Main-$basearch_1.2:3-${releasever}"
                                 << ""
                                 << "";
    QTest::newRow("brackets within a line of options") << "x"
                                                       << "a=[b]\n#[c]\n"
                                                       << "";
    QTest::newRow("options over several lines") << "x"
                                                << "a=b\n [c]\n\td\n"
                                                << "";
}

void RepoEditorConfigTest::whatAFileWouldNotGiveBackIsRefused()
{
    QFETCH(QString, id);
    QFETCH(QString, options);
    QFETCH(QString, refusal);
    Repo::Entry entry;
    entry.id = id;
    entry.options = options;
    entry.baseurl = QStringLiteral("not a URL at all");
    config->setEntry(entry);
    QCOMPARE(status(), refusal);
    QCOMPARE(config->canBeWritten(), refusal.isEmpty());
    if (!refusal.isEmpty()) {
        QCOMPARE(label->palette().color(QPalette::Window), QColor(Colors::errorBg()));
    }
}

void RepoEditorConfigTest::theMainConfigurationFileIsAlwaysRight()
{
    Repo::Entry entry = usual();
    entry.file = YumConfIO::fileName();
    config->setEntry(entry);
    QCOMPARE(status(), QString());
    conf->reposdir.clear();
    QCOMPARE(status(), QString());
}

void RepoEditorConfigTest::blankingAndFillingAgain()
{
    config->setEntry(vantor());
    config->disable();
    QVERIFY(sameFields(config->toEntry(), Repo::Entry()));
    QVERIFY(form->password->text().isEmpty());
    config->setEntry(vantor());
    QVERIFY(sameFields(config->toEntry(), vantor()));
    QVERIFY(form->id->isEnabled());
    // Nothing of the other entry can be brought back.
    config->setEntry(usual());
    for (QWidget* field : {static_cast<QWidget*>(form->urls), static_cast<QWidget*>(form->mirrorList),
                           static_cast<QWidget*>(form->options), static_cast<QWidget*>(form->id)}) {
        field->setFocus();
        QTest::keySequence(field, QKeySequence(QKeySequence::Undo));
    }
    QVERIFY(sameFields(config->toEntry(), usual()));
}

QTEST_MAIN(RepoEditorConfigTest)
#include "RepoEditorConfigTest.moc"
