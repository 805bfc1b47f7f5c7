// SPDX-License-Identifier: GPL-2.0-or-later

#include "app/Translations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <algorithm>
#include <memory>

#include "app/base/Share.h"

namespace Translations {

namespace {

// Loads <name>_<language>.qm. If this file is missing, loads the file of the language without its country.
// Returns the file name without its suffix, or an empty string if no file is found.
QString load(QCoreApplication& app, const QString& name, QString language, const QStringList& directories)
{
    language.replace(QLatin1Char('-'), QLatin1Char('_'));
    auto translator = std::make_unique<QTranslator>();
    const auto open = [&translator, &directories](const QString& file) {
        return std::any_of(directories.begin(), directories.end(), [&](const QString& directory) {
            // Empty delimiters prevent QTranslator from trying shorter file names. This function does that
            // itself.
            return translator->load(file, directory, QLatin1String(""));
        });
    };
    for (;;) {
        const QString file = name + QLatin1Char('_') + language;
        if (open(file)) {
            translator->setParent(&app);
            QCoreApplication::installTranslator(translator.release());
            return file;
        }
        const int end = language.lastIndexOf(QLatin1Char('_'));
        if (end < 0) {
            return {};
        }
        language.truncate(end);
    }
}

bool isEnglish(const QString& language)
{
    return QLocale(language).language() == QLocale::English;
}

// Returns whether the locale is "C" or "POSIX", so the user gets the untranslated English texts. VYRE and the
// package manager then both ignore LANGUAGE.
bool isPlainWanted()
{
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const QByteArray locale = qgetenv(variable);
        if (!locale.isEmpty()) {
            return locale == "C" || locale == "POSIX";
        }
    }
    return false;
}

} // namespace

QStringList directories()
{
    return {Share::absolute(QStringLiteral("translations")),
            QCoreApplication::applicationDirPath() + QLatin1String("/translations")};
}

QString install(QCoreApplication& app, const QStringList& languages)
{
    for (const QString& language : languages) {
        if (isEnglish(language)) {
            break;
        }
        const QString loaded = load(app, QStringLiteral("vyre"), language, directories());
        if (!loaded.isEmpty()) {
            load(app, QStringLiteral("qtbase"), language,
                 {QLibraryInfo::location(QLibraryInfo::TranslationsPath)});
            return loaded;
        }
    }
    return {};
}

QString install(QCoreApplication& app)
{
    return isPlainWanted() ? QString() : install(app, QLocale::system().uiLanguages());
}

} // namespace Translations
