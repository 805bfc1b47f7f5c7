// SPDX-License-Identifier: GPL-2.0-or-later

#include "tests/yumio/ReportFixture.h"

#include <QTest>

namespace {

// Payload classes that derive from dnf's own classes, and helpers that catch exceptions from yumIOC.
//
// If a test sets several values in quick succession, a bar skips some of them. Therefore a test sleeps before
// it sets a value that it checks.
const char* const definitions = R"(
import time

class Rpm(dnf.repo.RPMPayload):
    download_size = None
    def __init__(self, name, size, arch='x86_64'):
        self.pkg = Thing(name=name, arch=arch)
        self.download_size = size
    def __str__(self):
        return self.pkg.name + '.rpm'

class Delta(dnf.drpm.DeltaPayload):
    download_size = None
    def __init__(self, name, size):
        self.pkg = Thing(name=name, arch='x86_64')
        self.download_size = size
    def __str__(self):
        return self.pkg.name + '.drpm'

class Metadata(dnf.repo.MDPayload):
    download_size = None
    def __init__(self, name, size):
        self.name = name
        self.download_size = size
    def __str__(self):
        return self.name

class Wrong:
    def __str__(self):
        raise self.exception

def failure(function, *arguments):
    try:
        return function(*arguments)
    except Exception as e:
        return type(e).__name__

def confirmed(*items):
    yumIOC.listTransaction(None, items)
    assert yumIOC.userconfirm() == 1
)";

} // namespace

void ReportFixture::initTestCase()
{
    ApplyFixture::initTestCase();
    backEnd->run(definitions);
    QVERIFY(backEnd->collect()); // after a collection, the bars are idle
    // The item bar's tip needs a visible window.
    backEnd->window.show();
}

QStringList ReportFixture::logged(int from)
{
    QStringList lines;
    for (const QString& line : backEnd->log(from)) {
        if (!line.contains("This plugin does not support")) {
            lines.append(line);
        }
    }
    return lines;
}
