// SPDX-License-Identifier: GPL-2.0-or-later

// The back end, with access for tests to members that are otherwise private.

#ifndef TESTS_YUMIO_YUMIOPROBE_H
#define TESTS_YUMIO_YUMIOPROBE_H

#include "yumio/YumIO.h"

class YumIOProbe : public YumIO
{
public:
    using YumIO::Idle;

    using YumIO::BdbQuit;
    using YumIO::ClassCount;
    using YumIO::DeltaPayload;
    using YumIO::DnfError;
    using YumIO::LockError;
    using YumIO::MDPayload;
    using YumIO::MetadataError;
    using YumIO::MiscError;
    using YumIO::OtherRepoError;
    using YumIO::RepoError;
    using YumIO::RPMPayload;

    // The interpreter
    Python& python() { return *this; }
    bool startInterpreter() { return python().initialize(); } // without the script

    // Values
    using YumIO::getBiArch;

    // Messages and processes
    using YumIO::ChildSignal;
    using YumIO::commExceptRaised;
    using YumIO::commExceptSetup;
    using YumIO::error;
    using YumIO::pythonException;
    using YumIO::pythonExceptionV;
    using YumIO::reapChildren;
    using YumIO::warning;

    // Details
    using YumIO::findPackage;
    using YumIO::getRpmHdrValue;

    // Operations
    using YumIO::applyGrpConflict;
    using YumIO::ApplyThread;
    using YumIO::blocker;
    using YumIO::CleanThread;
    using YumIO::ClearEntriesThread;
    using YumIO::CollectFileListsThread;
    using YumIO::CollectOtherDataThread;
    using YumIO::CollectSearchTextsThread;
    using YumIO::CollectThread;
    using YumIO::execWorkThread;
    using YumIO::LoadChangeLogThread;
    using YumIO::verifyLocalPkg;

    // State
    using YumIO::basearch;
    using YumIO::classes;
    using YumIO::dialogs;
    using YumIO::dnfVersionLooked;
    using YumIO::dnfVersionText;
    using YumIO::enabledRepos;
    using YumIO::exceptLogStart;
    using YumIO::fewPackages;
    using YumIO::fileListsLoaded;
    using YumIO::locked;
    using YumIO::missingAttributes;
    using YumIO::otherDataLoaded;
    using YumIO::phase;
    using YumIO::progress;
    using YumIO::readingCount;
    using YumIO::readingMax;
    using YumIO::readingName;
    using YumIO::records;
    using YumIO::stderrCapturedPending;
    using YumIO::stderrKind;
    using YumIO::stderrLevel;
    using YumIO::stderrPending;
    using YumIO::stdoutCapturedPending;
    using YumIO::stdoutPending;
    using YumIO::transaction;
};

#endif
