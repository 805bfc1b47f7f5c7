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

// Texts of Qt in this program's windows: the standard buttons, and the context menus of fields and scroll
// bars. VYRE's catalogues translate them, because many systems lack Qt's own catalogues. translations/update
// takes the texts from here.
[[maybe_unused]] constexpr const char* toolkitTexts[] = {
    QT_TRANSLATE_NOOP("QPlatformTheme", "OK"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "Save"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "Save All"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "Open"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "&Yes"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "Yes to &All"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "&No"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "N&o to All"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "Abort"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "Retry"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "Ignore"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "Close"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "Cancel"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "Discard"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "Help"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "Apply"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "Reset"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "Restore Defaults"),
    QT_TRANSLATE_NOOP("QDialogButtonBox", "OK"),
    QT_TRANSLATE_NOOP("QLineEdit", "&Undo"),
    QT_TRANSLATE_NOOP("QLineEdit", "&Redo"),
    QT_TRANSLATE_NOOP("QLineEdit", "Cu&t"),
    QT_TRANSLATE_NOOP("QLineEdit", "&Copy"),
    QT_TRANSLATE_NOOP("QLineEdit", "&Paste"),
    QT_TRANSLATE_NOOP("QLineEdit", "Delete"),
    QT_TRANSLATE_NOOP("QLineEdit", "Select All"),
    QT_TRANSLATE_NOOP("QWidgetTextControl", "&Undo"),
    QT_TRANSLATE_NOOP("QWidgetTextControl", "&Redo"),
    QT_TRANSLATE_NOOP("QWidgetTextControl", "Cu&t"),
    QT_TRANSLATE_NOOP("QWidgetTextControl", "&Copy"),
    QT_TRANSLATE_NOOP("QWidgetTextControl", "&Paste"),
    QT_TRANSLATE_NOOP("QWidgetTextControl", "Delete"),
    QT_TRANSLATE_NOOP("QWidgetTextControl", "Select All"),
    QT_TRANSLATE_NOOP("QWidgetTextControl", "Copy &Link Location"),
    QT_TRANSLATE_NOOP("QAbstractSpinBox", "&Select All"),
    QT_TRANSLATE_NOOP("QAbstractSpinBox", "&Step up"),
    QT_TRANSLATE_NOOP("QAbstractSpinBox", "Step &down"),
    QT_TRANSLATE_NOOP("QScrollBar", "Scroll here"),
    QT_TRANSLATE_NOOP("QScrollBar", "Left edge"),
    QT_TRANSLATE_NOOP("QScrollBar", "Top"),
    QT_TRANSLATE_NOOP("QScrollBar", "Right edge"),
    QT_TRANSLATE_NOOP("QScrollBar", "Bottom"),
    QT_TRANSLATE_NOOP("QScrollBar", "Page left"),
    QT_TRANSLATE_NOOP("QScrollBar", "Page up"),
    QT_TRANSLATE_NOOP("QScrollBar", "Page right"),
    QT_TRANSLATE_NOOP("QScrollBar", "Page down"),
    QT_TRANSLATE_NOOP("QScrollBar", "Scroll left"),
    QT_TRANSLATE_NOOP("QScrollBar", "Scroll up"),
    QT_TRANSLATE_NOOP("QScrollBar", "Scroll right"),
    QT_TRANSLATE_NOOP("QScrollBar", "Scroll down"),
};

// Loads <name>_<language>.qm. If this file is missing, loads the file of the language without its country.
// Returns the file name without its suffix, or an empty string if no file is found.
QString load(QCoreApplication& app, const QString& name, QString language, const QStringList& directories)
{
    language.replace(QLatin1Char('-'), QLatin1Char('_'));
    auto translator = std::make_unique<QTranslator>();
    const auto open = [&translator, &directories](const QString& file) {
        return std::any_of(directories.begin(), directories.end(), [&](const QString& directory) {
            // Empty delimiters prevent QTranslator from trying shorter file names. VYRE's own load() tries
            // them.
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

// Returns whether the locale is "C" or "POSIX". With these locales, the user gets the untranslated English
// texts: VYRE and the package manager both ignore LANGUAGE.
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
