// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/base/WithoutOpenGl.h"

#include <QByteArray>

namespace {

const char variable[] = "QT_XCB_GL_INTEGRATION";

} // namespace

WithoutOpenGl::WithoutOpenGl() : isSet(!qEnvironmentVariableIsSet(variable))
{
    if (isSet) {
        qputenv(variable, QByteArrayLiteral("none"));
    }
}

WithoutOpenGl::~WithoutOpenGl()
{
    if (isSet) {
        qunsetenv(variable);
    }
}
