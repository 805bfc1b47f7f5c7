// SPDX-License-Identifier: GPL-2.0-or-later

#include <QtTest>

#include <QApplication>
#include <QSettings>
#include <QStyle>
#include <QStyleFactory>

#include <cstring>
#include <vector>

#include "app/base/DefaultStyle.h"
#include "app/base/Program.h"

namespace {

const char unknownStyleOption[] = "--set-an-unknown-style";

DefaultStyle styleFor(const QList<QByteArray>& options)
{
    QByteArray name("vyre");
    QList<QByteArray> texts = options;
    std::vector<char*> arguments{name.data()};
    for (QByteArray& text : texts) {
        arguments.push_back(text.data());
    }
    return DefaultStyle(static_cast<int>(arguments.size()), arguments.data());
}

QString currentStyle()
{
    return QApplication::style()->objectName().toLower();
}

} // namespace

class DefaultStyleTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir settingsDirectory;
    QTemporaryDir systemDirectory;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(settingsDirectory.isValid());
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settingsDirectory.path());
        QSettings::setPath(QSettings::NativeFormat, QSettings::SystemScope, systemDirectory.path());
    }

    void init()
    {
        QSettings stored(QSettings::UserScope, "Trolltech");
        stored.clear();
        stored.sync();
        QVERIFY(QApplication::setStyle("Windows") != nullptr);
        QPalette strange;
        strange.setColor(QPalette::Window, Qt::magenta);
        QApplication::setPalette(strange);
    }

    void theDefaultStyleAndItsPaletteAreAppliedIfTheUserHasChosenNoStyle()
    {
        styleFor({}).set(*qApp, "Fusion");
        QCOMPARE(currentStyle(), QStringLiteral("fusion"));
        const QPalette standard = QApplication::style()->standardPalette();
        for (const QPalette::ColorRole role : {QPalette::Window, QPalette::Base, QPalette::Text}) {
            QCOMPARE(QApplication::palette().color(role), standard.color(role));
        }
    }

    void theDefaultStyleIsNotAppliedIfTheCommandLineHasAStyleOption_data()
    {
        QTest::addColumn<QList<QByteArray>>("options");
        QTest::addColumn<bool>("suppressed");
        QTest::newRow("no option") << QList<QByteArray>() << false;
        QTest::newRow("-style=") << QList<QByteArray>{"-style=windows"} << true;
        QTest::newRow("-style= without a name") << QList<QByteArray>{"-style="} << true;
        QTest::newRow("-style") << QList<QByteArray>{"-style", "windows"} << true;
        QTest::newRow("after other options") << QList<QByteArray>{"-g", "foo", "-style=windows"} << true;
        QTest::newRow("before other options") << QList<QByteArray>{"-style", "windows", "-g"} << true;
        QTest::newRow("-styles") << QList<QByteArray>{"-styles"} << false;
        QTest::newRow("-stylesheet") << QList<QByteArray>{"-stylesheet=x"} << false;
        QTest::newRow("--style=") << QList<QByteArray>{"--style=windows"} << false;
        QTest::newRow("x-style=") << QList<QByteArray>{"x-style=windows"} << false;
    }

    void theDefaultStyleIsNotAppliedIfTheCommandLineHasAStyleOption()
    {
        QFETCH(QList<QByteArray>, options);
        QFETCH(bool, suppressed);
        const QString before = currentStyle();
        styleFor(options).set(*qApp, "Fusion");
        QCOMPARE(currentStyle(), suppressed ? before : QStringLiteral("fusion"));
        QCOMPARE(QApplication::palette().color(QPalette::Window) == QColor(Qt::magenta), suppressed);
    }

    void theDefaultStyleIsAppliedIfOnlyTheProgramNameLooksLikeAStyleOption()
    {
        char name[] = "-style=windows";
        char* arguments[] = {name};
        DefaultStyle(1, arguments).set(*qApp, "Fusion");
        QCOMPARE(currentStyle(), QStringLiteral("fusion"));
    }

    void theDefaultStyleIsAppliedIfOnlyTheSystemSettingsContainAStyle()
    {
        {
            QSettings stored(QSettings::SystemScope, "Trolltech");
            stored.setValue("Qt/style", "Windows");
        }
        QVERIFY(QSettings(QSettings::UserScope, "Trolltech").contains("Qt/style"));
        styleFor({}).set(*qApp, "Fusion");
        QSettings(QSettings::SystemScope, "Trolltech").clear();
        QCOMPARE(currentStyle(), QStringLiteral("fusion"));
    }

    void theDefaultStyleIsNotAppliedIfTheUserSettingsContainAStyle()
    {
        {
            QSettings stored(QSettings::UserScope, "Trolltech");
            stored.setValue("Qt/style", "Windows");
        }
        styleFor({}).set(*qApp, "Fusion");
        QCOMPARE(currentStyle(), QStringLiteral("windows"));
    }

    void theDefaultStyleIsAppliedIfTheUserSettingsContainNoStyleForQt()
    {
        {
            QSettings stored(QSettings::UserScope, "Trolltech");
            stored.setValue("style", "Windows");
            stored.setValue("Qt/font", "Helvetica");
            stored.setValue("Other/style", "Windows");
            QSettings ofAnApplication(QSettings::UserScope, "Trolltech", "vyre");
            ofAnApplication.setValue("Qt/style", "Windows");
        }
        styleFor({}).set(*qApp, "Fusion");
        QCOMPARE(currentStyle(), QStringLiteral("fusion"));
    }

    void anUnknownDefaultStyleIsIgnoredIfTheUserHasChosenAStyle()
    {
        styleFor({"-style=windows"}).set(*qApp, "Nonesuch");
        QCOMPARE(currentStyle(), QStringLiteral("windows"));
    }

    void anUnknownStyleEndsTheProgramWithAListOfTheKnownStyles()
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_CONFIG_HOME", settingsDirectory.path());
        environment.insert("XDG_RUNTIME_DIR", settingsDirectory.path());
        process.setProcessEnvironment(environment);
        process.start(QCoreApplication::applicationFilePath(), {unknownStyleOption});
        QVERIFY(process.waitForFinished(60000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 1);
        QString wanted = QStringLiteral("tester: unrecognized style: Nonesuch\ntester: known styles:\n");
        for (const QString& key : QStyleFactory::keys()) {
            wanted += "tester:    " + key + "\n";
        }
        QCOMPARE(QString::fromUtf8(process.readAllStandardError()), wanted);
        QCOMPARE(process.readAllStandardOutput(), QByteArray());
    }
};

int main(int argc, char** argv)
{
    const bool unknownStyle = argc == 2 && std::strcmp(argv[1], unknownStyleOption) == 0;
    QApplication app(argc, argv);
    if (unknownStyle) {
        program = "tester";
        DefaultStyle(argc, argv).set(app, "Nonesuch");
        return 0;
    }
    DefaultStyleTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "DefaultStyleTest.moc"
