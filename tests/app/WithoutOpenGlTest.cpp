// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/base/WithoutOpenGl.h"

#include <QFile>
#include <QWidget>
#include <QtTest>

#include <optional>

// Tests of the setting that keeps Qt from loading OpenGL.
class WithoutOpenGlTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aWindowIsShownWithoutLoadingTheOpenGlLibraries();
    void aUserSettingForOpenGlIsNotChanged();
};

namespace {

const char variable[] = "QT_XCB_GL_INTEGRATION";

bool hasLoaded(const char* library)
{
    QFile maps("/proc/self/maps");
    if (!maps.open(QIODevice::ReadOnly)) {
        qFatal("the list of loaded files cannot be read");
    }
    return maps.readAll().contains(library);
}

} // namespace

void WithoutOpenGlTest::aWindowIsShownWithoutLoadingTheOpenGlLibraries()
{
    qunsetenv(variable);
    std::optional<WithoutOpenGl> withoutOpenGl(std::in_place);
    QWidget window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    withoutOpenGl.reset();
    QVERIFY(!qEnvironmentVariableIsSet(variable));
    QVERIFY(hasLoaded("libqxcb"));
    QVERIFY(!hasLoaded("libqxcb-glx-integration"));
    QVERIFY(!hasLoaded("libqxcb-egl-integration"));
}

void WithoutOpenGlTest::aUserSettingForOpenGlIsNotChanged()
{
    qputenv(variable, "xcb_egl");
    std::optional<WithoutOpenGl> withoutOpenGl(std::in_place);
    QCOMPARE(qgetenv(variable), QByteArray("xcb_egl"));
    withoutOpenGl.reset();
    QCOMPARE(qgetenv(variable), QByteArray("xcb_egl"));
}

QTEST_MAIN(WithoutOpenGlTest)
#include "WithoutOpenGlTest.moc"
