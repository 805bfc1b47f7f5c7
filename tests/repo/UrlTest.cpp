// SPDX-License-Identifier: GPL-2.0-or-later

#include "repo/Url.h"

#include <QtTest>

class UrlTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theHostIsFoundInTheUrl_data();
    void theHostIsFoundInTheUrl();
};

void UrlTest::theHostIsFoundInTheUrl_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("host");
    QTest::newRow("path") << "http://one.example/a/b"
                          << "one.example";
    QTest::newRow("no path") << "http://one.example"
                             << "one.example";
    QTest::newRow("port") << "http://one.example:8080/a"
                          << "one.example:8080";
    QTest::newRow("two URLs") << "http://one.example/a\nhttp://two.example/b"
                              << "one.example";
    QTest::newRow("file") << "file:///srv/repo"
                          << "";
    QTest::newRow("one slash") << "file:/srv/repo"
                               << "";
    QTest::newRow("nothing after the colon") << "http:"
                                             << "";
    QTest::newRow("one character after the colon") << "http:/"
                                                   << "";
    QTest::newRow("nothing after the slashes") << "http://"
                                               << "";
    QTest::newRow("no colon") << "//one.example/a"
                              << "";
    QTest::newRow("colon before the URL") << "a:b http://one.example/a"
                                          << "";
    QTest::newRow("empty") << ""
                           << "";
}

void UrlTest::theHostIsFoundInTheUrl()
{
    QFETCH(QString, url);
    QTEST(URL::getHost(url), "host");
}

QTEST_APPLESS_MAIN(UrlTest)
#include "UrlTest.moc"
