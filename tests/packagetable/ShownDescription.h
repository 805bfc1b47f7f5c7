// SPDX-License-Identifier: GPL-2.0-or-later

// The base class for tests of windows that describe a package. The class has records and repositories, and
// opens the description of a record.

#ifndef TESTS_PACKAGETABLE_SHOWNDESCRIPTION_H
#define TESTS_PACKAGETABLE_SHOWNDESCRIPTION_H

#include <QtTest>
#include <QtWidgets>

#include <functional>
#include <memory>

#include "packagetable/DescribeDialog.h"
#include "packagetable/DescribeRepoDialog.h"
#include "repo/YumConfIO.h"
#include "tests/packagetable/Described.h"
#include "tests/packagetable/Table.h"

class ShownDescription : public QObject
{
    Q_OBJECT

protected:
    using S = StandIn;
    using Dialog = PackageTable::Describe::Dialog;
    using RepoDialog = PackageTable::Describe::Instance::RepoDialog;

    // Markup that every window must show as plain text.
    static constexpr char markup[] = "<b>bold</b> &amp; <img src=x> <script>alert(1)</script>";

    // Opens the description of a record, and calls use() with the opened dialog.
    void describe(const QString& name, const std::function<void(Dialog&)>& use);
    // Replaces all records by one available or installed package with the name "it" and these attributes.
    void available(const QJsonObject& attributes);
    void installed(const QJsonObject& attributes);
    void repo(const QString& id, const QString& name, const QString& urls, const QString& mirrorList);
    // Presses the button, which opens a text dialog. Returns the title and the text of this dialog.
    static QStringList textBehind(QPushButton* button);
    void setLoaded(bool fileLists, bool otherData);

    std::unique_ptr<Table> table;
    QList<YumRepoEnabled> requests;
    QHash<QString, bool> session;
    std::unique_ptr<YumConfIO> conf;
    std::unique_ptr<QWidget> window;
    std::unique_ptr<Dialog> dialog;

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
};

#endif
