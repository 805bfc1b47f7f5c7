// SPDX-License-Identifier: GPL-2.0-or-later

#include "yumio/Words.h"

QString Words::of(Package::Action action)
{
    switch (action) {
    case Package::Update:
        return tr("Update");
    case Package::Install:
        return tr("Install");
    case Package::Remove:
        return tr("Remove");
    case Package::None:
        return tr("No Action");
    }
    return QString();
}

QString Words::explained(Package::Action action)
{
    switch (action) {
    case Package::Update:
        return tr("Update package");
    case Package::Install:
        return tr("Install package");
    case Package::Remove:
        return tr("Remove package");
    case Package::None:
        break;
    }
    return QString();
}

QString Words::of(Package::State state)
{
    switch (state) {
    case Package::Updatable:
        return tr("Out-of-date");
    case Package::Available:
        return tr("Not Installed");
    case Package::Installed:
        return tr("Up-to-date");
    }
    return QString();
}

QString Words::described(Package::State state)
{
    switch (state) {
    case Package::Updatable:
        return tr("Available for update");
    case Package::Available:
        return tr("Available for installation");
    case Package::Installed:
        return tr("Installed");
    }
    return QString();
}

QString Words::explained(Package::State state)
{
    switch (state) {
    case Package::Updatable:
        return tr("Package is available to update an out-of-date version");
    case Package::Available:
        return tr("Package is available for installation");
    case Package::Installed:
        return tr("Package is installed and up-to-date");
    }
    return QString();
}

QString Words::of(Package::Kind kind)
{
    switch (kind) {
    case Package::Suite:
        return tr("Suite");
    case Package::Group:
        return tr("Group");
    case Package::Ordinary:
        return tr("Package");
    }
    return QString();
}

QString Words::described(Package::Kind kind)
{
    switch (kind) {
    case Package::Suite:
        return tr("Suite of packages");
    case Package::Group:
        return tr("Group of packages");
    case Package::Ordinary:
        return tr("Ordinary package");
    }
    return QString();
}
