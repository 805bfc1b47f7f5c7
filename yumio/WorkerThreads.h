// The worker threads: one class for each long operation of the back end.
//
// Each object lives on the stack of the graphical thread, which waits in the event loop given to it; the
// thread ends that loop when its operation is over, and the result is read then.

#ifndef YUMIO_WORKERTHREADS_H
#define YUMIO_WORKERTHREADS_H

#include <QEventLoop>
#include <QHash>
#include <QString>
#include <QThread>
#include <QVector>

#include "yumio/Package.h"

class YumIO;

class CollectThread : public QThread
{
public:
    CollectThread(YumIO* owner, QEventLoop& eventLoop, const QHash<QString, bool>& enable)
        : yumIO(owner), loop(eventLoop), repoEnable(enable)
    {
    }
    bool result = false;

protected:
    void run() override;

private:
    YumIO* yumIO;
    QEventLoop& loop;
    const QHash<QString, bool>& repoEnable;
};

class ClearEntriesThread : public QThread
{
public:
    ClearEntriesThread(YumIO* owner, QEventLoop& eventLoop) : yumIO(owner), loop(eventLoop) {}

protected:
    void run() override;

private:
    YumIO* yumIO;
    QEventLoop& loop;
};

class CollectFileListsThread : public QThread
{
public:
    CollectFileListsThread(YumIO* owner, QEventLoop& eventLoop) : yumIO(owner), loop(eventLoop) {}
    bool result = false;

protected:
    void run() override;

private:
    YumIO* yumIO;
    QEventLoop& loop;
};

class CollectOtherDataThread : public QThread
{
public:
    CollectOtherDataThread(YumIO* owner, QEventLoop& eventLoop) : yumIO(owner), loop(eventLoop) {}
    bool result = false;

protected:
    void run() override;

private:
    YumIO* yumIO;
    QEventLoop& loop;
};

class CollectSearchTextsThread : public QThread
{
public:
    CollectSearchTextsThread(YumIO* owner, QEventLoop& eventLoop, const QVector<Package::Entry*>& entries)
        : yumIO(owner), loop(eventLoop), wanted(entries)
    {
    }

protected:
    void run() override;

private:
    YumIO* yumIO;
    QEventLoop& loop;
    const QVector<Package::Entry*>& wanted;
};

class LoadChangeLogThread : public QThread
{
public:
    LoadChangeLogThread(YumIO* owner, QEventLoop& eventLoop, const Package::Entry& record)
        : yumIO(owner), loop(eventLoop), entry(record)
    {
    }

protected:
    void run() override;

private:
    YumIO* yumIO;
    QEventLoop& loop;
    const Package::Entry& entry;
};

class CleanThread : public QThread
{
public:
    CleanThread(YumIO* owner, QEventLoop& eventLoop, const QString& cleanedLabel, const char* scriptMethod)
        : yumIO(owner), loop(eventLoop), label(cleanedLabel), method(scriptMethod)
    {
    }
    bool result = false;

protected:
    void run() override;

private:
    YumIO* yumIO;
    QEventLoop& loop;
    const QString& label;
    const char* method;
};

class ApplyThread : public QThread
{
public:
    ApplyThread(YumIO* owner, QEventLoop& eventLoop) : yumIO(owner), loop(eventLoop) {}
    bool result = false;

protected:
    void run() override;

private:
    YumIO* yumIO;
    QEventLoop& loop;
};

#endif
