<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>AdvisoriesCommand</name>
    <message>
        <source>VYRE cannot show advisories, because it could not read the packages.</source>
        <translation>VYRE kann keine Aktualisierungshinweise zeigen, weil es die Pakete nicht lesen konnte.</translation>
    </message>
</context>
<context>
    <name>AdvisoryDialog</name>
    <message>
        <source>Advisories</source>
        <translation>Aktualisierungshinweise</translation>
    </message>
    <message>
        <source>VYRE Advisories</source>
        <translation>VYRE – Aktualisierungshinweise</translation>
    </message>
    <message>
        <source>No repository has an advisory about an installed package.</source>
        <translation>Keine Paketquelle hat einen Hinweis zu einem installierten Paket.</translation>
    </message>
    <message>
        <source>Details of the advisory</source>
        <translation>Einzelheiten des Hinweises</translation>
    </message>
    <message>
        <source>&amp;Mark Updates</source>
        <translation>&amp;Aktualisierungen vormerken</translation>
    </message>
    <message>
        <source>Sets the Action to Update for the packages of the selected advisories.
Does not Apply Actions automatically.</source>
        <translation>Merkt die Pakete der ausgewählten Hinweise zum Aktualisieren vor.
Die Aktionen werden damit noch nicht angewendet.</translation>
    </message>
    <message>
        <source>Mark All &amp;Security Updates</source>
        <translation>Alle &amp;Sicherheitsaktualisierungen vormerken</translation>
    </message>
    <message>
        <source>Sets the Action to Update for the packages of all security advisories.
Does not Apply Actions automatically.</source>
        <translation>Merkt die Pakete aller Sicherheitshinweise zum Aktualisieren vor.
Die Aktionen werden damit noch nicht angewendet.</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>S&amp;chließen</translation>
    </message>
    <message>
        <source>Close the window and keep the marks</source>
        <translation>Das Fenster schließen und die Vormerkungen behalten</translation>
    </message>
    <message>
        <source>Packages marked for an update: %1</source>
        <translation>Zum Aktualisieren vorgemerkte Pakete: %1</translation>
    </message>
    <message>
        <source>These packages could not be marked:
%1</source>
        <translation>Diese Pakete konnten nicht vorgemerkt werden:
%1</translation>
    </message>
    <message>
        <source>Mark Updates</source>
        <translation>Aktualisierungen vormerken</translation>
    </message>
</context>
<context>
    <name>AdvisoryMarker</name>
    <message>
        <source>%1: installed</source>
        <translation>%1: installiert</translation>
    </message>
    <message>
        <source>%1: no repository offers an update</source>
        <translation>%1: keine Paketquelle bietet eine Aktualisierung an</translation>
    </message>
    <message>
        <source>%1: the offered update %2 is older</source>
        <translation>%1: die angebotene Aktualisierung %2 ist älter</translation>
    </message>
    <message>
        <source>%1: the version is locked</source>
        <translation>%1: die Version ist gesperrt</translation>
    </message>
    <message>
        <source>%1: the configuration excludes the update</source>
        <translation>%1: die Konfiguration schließt die Aktualisierung aus</translation>
    </message>
    <message>
        <source>%1: not installed; the update %2 is available</source>
        <translation>%1: nicht installiert; die Aktualisierung %2 ist verfügbar</translation>
    </message>
    <message>
        <source>%1: the table lists no update</source>
        <translation>%1: die Tabelle enthält keine Aktualisierung</translation>
    </message>
    <message>
        <source>%1: a package of another name replaces it; mark that package in the table if you want it</source>
        <translation>%1: ein Paket mit anderem Namen ersetzt es; merken Sie dieses Paket in der Tabelle vor, wenn Sie es möchten</translation>
    </message>
    <message>
        <source>%1: it is marked for removal</source>
        <translation>%1: es ist zum Entfernen vorgemerkt</translation>
    </message>
</context>
<context>
    <name>AdvisoryModel</name>
    <message>
        <source>The identifier of the advisory</source>
        <translation>Die Kennung des Hinweises</translation>
    </message>
    <message>
        <source>Advisory</source>
        <translation>Hinweis</translation>
    </message>
    <message>
        <source>Security, bug fix, enhancement or new package</source>
        <translation>Sicherheit, Fehlerkorrektur, Verbesserung oder neues Paket</translation>
    </message>
    <message>
        <source>Kind</source>
        <translation>Art</translation>
    </message>
    <message>
        <source>The severity of a security fault</source>
        <translation>Die Schwere eines Sicherheitsfehlers</translation>
    </message>
    <message>
        <source>Severity</source>
        <translation>Schwere</translation>
    </message>
    <message>
        <source>The day on which the advisory was issued or changed</source>
        <translation>Der Tag, an dem der Hinweis veröffentlicht oder geändert wurde</translation>
    </message>
    <message>
        <source>Date</source>
        <translation>Datum</translation>
    </message>
    <message>
        <source>Whether all packages of the advisory are installed in its version or a newer version</source>
        <translation>Ob alle Pakete des Hinweises in seiner oder einer neueren Version installiert sind</translation>
    </message>
    <message>
        <source>State</source>
        <translation>Zustand</translation>
    </message>
    <message>
        <source>The title of the advisory</source>
        <translation>Der Titel des Hinweises</translation>
    </message>
    <message>
        <source>Title</source>
        <translation>Titel</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>CVE</source>
        <translation>CVE</translation>
    </message>
    <message>
        <source>Bugs</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>Packages</source>
        <translation>Pakete</translation>
    </message>
</context>
<context>
    <name>Colors</name>
    <message>
        <source>blue</source>
        <translation>blue</translation>
    </message>
    <message>
        <source>red</source>
        <translation>red</translation>
    </message>
    <message>
        <source>#ffa9b8</source>
        <translation>#ffa9b8</translation>
    </message>
    <message>
        <source>darkorange</source>
        <translation>darkorange</translation>
    </message>
    <message>
        <source>#8b5a2b</source>
        <translation>#8b5a2b</translation>
    </message>
    <message>
        <source>#ffbd94</source>
        <translation>#ffbd94</translation>
    </message>
    <message>
        <source>green</source>
        <translation>green</translation>
    </message>
    <message>
        <source>#fffacd</source>
        <translation>#fffacd</translation>
    </message>
    <message>
        <source>#ff6060</source>
        <translation>#ff6060</translation>
    </message>
    <message>
        <source>yellow</source>
        <translation>yellow</translation>
    </message>
    <message>
        <source>lightgreen</source>
        <translation>lightgreen</translation>
    </message>
</context>
<context>
    <name>Execute</name>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>fork() failed; errno = %1 (%2)</source>
        <translation>fork() ist fehlgeschlagen; errno = %1 (%2)</translation>
    </message>
</context>
<context>
    <name>Fields</name>
    <message>
        <source>Kind</source>
        <translation>Art</translation>
    </message>
    <message>
        <source>Version</source>
        <translation>Version</translation>
    </message>
    <message>
        <source>Repository</source>
        <translation>Paketquelle</translation>
    </message>
    <message>
        <source>Architecture</source>
        <translation>Architektur</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>Summary</source>
        <translation>Zusammenfassung</translation>
    </message>
    <message>
        <source>Description</source>
        <translation>Beschreibung</translation>
    </message>
    <message>
        <source>Group</source>
        <translation>Gruppe</translation>
    </message>
    <message>
        <source>Vendor</source>
        <translation>Anbieter</translation>
    </message>
    <message>
        <source>Build Time</source>
        <translation>Erstellt am</translation>
    </message>
    <message>
        <source>Build Host</source>
        <translation>Erstellt auf</translation>
    </message>
    <message>
        <source>Install Time</source>
        <translation>Installiert am</translation>
    </message>
    <message>
        <source>Binary RPM</source>
        <translation>Binär-RPM</translation>
    </message>
    <message>
        <source>Source RPM</source>
        <translation>Quell-RPM</translation>
    </message>
    <message>
        <source>License</source>
        <translation>Lizenz</translation>
    </message>
    <message>
        <source>Packager</source>
        <translation>Paketierer</translation>
    </message>
    <message>
        <source>URL</source>
        <translation>URL</translation>
    </message>
    <message>
        <source>Relocations</source>
        <translation>Verschiebbar</translation>
    </message>
    <message>
        <source>Provides</source>
        <translation>Stellt bereit</translation>
    </message>
    <message>
        <source>Requires (pre)</source>
        <translation>Benötigt (vorab)</translation>
    </message>
    <message>
        <source>Requires</source>
        <translation>Benötigt</translation>
    </message>
    <message>
        <source>Conflicts</source>
        <translation>Konflikte</translation>
    </message>
    <message>
        <source>Obsoletes</source>
        <translation>Ersetzt</translation>
    </message>
    <message>
        <source>Recommends</source>
        <translation>Empfiehlt</translation>
    </message>
    <message>
        <source>Suggests</source>
        <translation>Schlägt vor</translation>
    </message>
    <message>
        <source>Supplements</source>
        <translation>Ergänzt</translation>
    </message>
    <message>
        <source>Enhances</source>
        <translation>Erweitert</translation>
    </message>
    <message>
        <source>Files</source>
        <translation>Dateien</translation>
    </message>
    <message>
        <source>Change Log</source>
        <translation>Änderungsprotokoll</translation>
    </message>
    <message>
        <source>Mandatory Packages</source>
        <translation>Notwendige Pakete</translation>
    </message>
    <message>
        <source>Default Packages</source>
        <translation>Standardpakete</translation>
    </message>
    <message>
        <source>Optional Packages</source>
        <translation>Optionale Pakete</translation>
    </message>
    <message>
        <source>Conditional Packages</source>
        <translation>Bedingte Pakete</translation>
    </message>
    <message>
        <source>Advisories</source>
        <translation>Aktualisierungshinweise</translation>
    </message>
    <message>
        <source>Module Streams</source>
        <translation>Modul-Streams</translation>
    </message>
    <message>
        <source>Version Lock</source>
        <translation>Versionssperre</translation>
    </message>
</context>
<context>
    <name>FilteredList</name>
    <message>
        <source>&amp;Filter</source>
        <translation>&amp;Filter</translation>
    </message>
    <message>
        <source>Regular expression</source>
        <translation>Regulärer Ausdruck</translation>
    </message>
    <message>
        <source>Regular expression filter matching the texts of a row,
as if they were separated by spaces</source>
        <translation>Regulärer Ausdruck, der auf die Texte einer Zeile passt,
als wären sie durch Leerzeichen getrennt</translation>
    </message>
    <message>
        <source>This is not a valid regular expression:
%1</source>
        <translation>Das ist kein gültiger regulärer Ausdruck:
%1</translation>
    </message>
    <message>
        <source>Nothing matches.</source>
        <translation>Nichts passt.</translation>
    </message>
    <message>
        <source>%1 of %2 listed</source>
        <translation>%1 von %2 aufgelistet</translation>
    </message>
    <message>
        <source>Comparing the rows with the expression...</source>
        <translation>Die Zeilen werden mit dem Ausdruck verglichen ...</translation>
    </message>
    <message>
        <source>Comparing the rows (Esc stops)</source>
        <translation>Zeilen werden verglichen (Esc hält an)</translation>
    </message>
</context>
<context>
    <name>FindBar</name>
    <message>
        <source>&amp;Next</source>
        <translation>&amp;Nächster Treffer</translation>
    </message>
    <message>
        <source>&amp;Previous</source>
        <translation>&amp;Vorheriger Treffer</translation>
    </message>
    <message>
        <source>Find</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>Go to the next match (F3)</source>
        <translation>Zum nächsten Treffer gehen (F3)</translation>
    </message>
    <message>
        <source>Go to the previous match (Shift+F3)</source>
        <translation>Zum vorherigen Treffer gehen (Umschalt+F3)</translation>
    </message>
    <message>
        <source>Close the Find bar</source>
        <translation>Die Suchleiste schließen</translation>
    </message>
    <message>
        <source>Not found</source>
        <translation>Nicht gefunden</translation>
    </message>
</context>
<context>
    <name>Fonts</name>
    <message>
        <source>Bitstream Vera Sans Mono</source>
        <translation>Bitstream Vera Sans Mono</translation>
    </message>
    <message>
        <source>DejaVu Sans Mono</source>
        <translation>DejaVu Sans Mono</translation>
    </message>
    <message>
        <source>Monospace</source>
        <translation>Monospace</translation>
    </message>
    <message>
        <source>Courier</source>
        <translation>Courier</translation>
    </message>
</context>
<context>
    <name>HProgressBar</name>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
</context>
<context>
    <name>HistoryCommand</name>
    <message>
        <source>VYRE cannot undo transactions, because it could not read the packages.</source>
        <translation>VYRE kann keine Transaktion rückgängig machen, weil es die Pakete nicht lesen konnte.</translation>
    </message>
</context>
<context>
    <name>HistoryDialog</name>
    <message>
        <source>Transactions</source>
        <translation>Transaktionen</translation>
    </message>
    <message>
        <source>VYRE History</source>
        <translation>VYRE – Verlauf</translation>
    </message>
    <message>
        <source>Details of the transaction</source>
        <translation>Einzelheiten der Transaktion</translation>
    </message>
    <message>
        <source>&amp;Undo This</source>
        <translation>Diese &amp;rückgängig machen</translation>
    </message>
    <message>
        <source>Undo All &amp;Since</source>
        <translation>Alle danach rück&amp;gängig machen</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Wiederholen</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Schließen</translation>
    </message>
    <message>
        <source>Close the window without changing anything</source>
        <translation>Das Fenster schließen, ohne etwas zu ändern</translation>
    </message>
    <message>
        <source>Reading the history...</source>
        <translation>Der Verlauf wird gelesen ...</translation>
    </message>
    <message>
        <source>The history has no transactions.</source>
        <translation>Der Verlauf hat keine Transaktionen.</translation>
    </message>
    <message>
        <source>The history could not be read.
To see the reason, close this window and open the Log window (Ctrl+L).</source>
        <translation>Der Verlauf konnte nicht gelesen werden.
Um den Grund zu sehen, schließen Sie dieses Fenster und öffnen Sie das Protokollfenster (Strg+L).</translation>
    </message>
    <message>
        <source>Reverses this transaction. VYRE shows the changes first.</source>
        <translation>Macht diese Transaktion rückgängig. VYRE zeigt vorher die Änderungen.</translation>
    </message>
    <message>
        <source>No transaction is newer than this transaction.</source>
        <translation>Keine Transaktion ist neuer als diese.</translation>
    </message>
    <message>
        <source>Reverses all newer transactions. VYRE shows the changes first.</source>
        <translation>Macht alle neueren Transaktionen rückgängig. VYRE zeigt vorher die Änderungen.</translation>
    </message>
    <message>
        <source>Repeats or completes this transaction. VYRE shows the changes first.</source>
        <translation>Wiederholt oder vollendet diese Transaktion. VYRE zeigt vorher die Änderungen.</translation>
    </message>
</context>
<context>
    <name>HistoryModel</name>
    <message>
        <source>Failed</source>
        <translation>Fehlgeschlagen</translation>
    </message>
    <message>
        <source>Interrupted</source>
        <translation>Unterbrochen</translation>
    </message>
    <message>
        <source>Succeeded</source>
        <translation>Gelungen</translation>
    </message>
    <message>
        <source>The number of the transaction, as in &quot;dnf history&quot;</source>
        <translation>Die Nummer der Transaktion, wie in „dnf history“</translation>
    </message>
    <message>
        <source>Number</source>
        <translation>Nummer</translation>
    </message>
    <message>
        <source>When the transaction began</source>
        <translation>Wann die Transaktion begann</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>Who was logged in</source>
        <translation>Wer angemeldet war</translation>
    </message>
    <message>
        <source>User</source>
        <translation>Benutzer</translation>
    </message>
    <message>
        <source>The command, or the marks that VYRE applied</source>
        <translation>Der Befehl, oder die Vormerkungen, die VYRE angewendet hat</translation>
    </message>
    <message>
        <source>Command Line</source>
        <translation>Befehlszeile</translation>
    </message>
    <message>
        <source>Changes</source>
        <translation>Änderungen</translation>
    </message>
    <message>
        <source>Whether the transaction succeeded, failed or was interrupted</source>
        <translation>Ob die Transaktion gelang, fehlschlug oder unterbrochen wurde</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>Ergebnis</translation>
    </message>
    <message>
        <source>The number of output lines of package scripts that dnf has kept</source>
        <translation>Die Zahl der Ausgabezeilen von Paketskripten, die dnf aufbewahrt hat</translation>
    </message>
    <message>
        <source>Output</source>
        <translation>Ausgabe</translation>
    </message>
    <message>
        <source>The changed packages and groups, or their number; &quot;(failed)&quot; marks changes that were not made</source>
        <translation>Die geänderten Pakete und Gruppen oder ihre Anzahl; „(fehlgeschlagen)“ kennzeichnet nicht erfolgte Änderungen</translation>
    </message>
</context>
<context>
    <name>Log::Window</name>
    <message>
        <source>VYRE Log</source>
        <translation>VYRE – Protokoll</translation>
    </message>
    <message>
        <source>Threshold beyond which more detailed log messages are omitted.
Higher levels show more detail.
The valid range is 0 .. %1.
The default is %2.
Higher levels contain debug information.
This corresponds to yum&apos;s debuglevel (-d) option.</source>
        <translation>Bis zu welcher Stufe Meldungen angezeigt werden.
Höhere Stufen zeigen mehr Einzelheiten.
Möglich sind 0 .. %1.
Vorgegeben ist %2.
Höhere Stufen enthalten auch Angaben zur Fehlersuche.
Das entspricht der Option debuglevel (-d) von yum.</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Schließen</translation>
    </message>
    <message>
        <source>Close the Log Window</source>
        <translation>Das Protokoll schließen</translation>
    </message>
    <message>
        <source>Detail level</source>
        <translation>Ausführlichkeit</translation>
    </message>
    <message>
        <source>&lt;/font&gt;</source>
        <translation>&lt;/font&gt;</translation>
    </message>
    <message>
        <source>&lt;font&gt;</source>
        <translation>&lt;font&gt;</translation>
    </message>
    <message>
        <source>&lt;font color=&quot;%1&quot;&gt;</source>
        <translation>&lt;font color=&quot;%1&quot;&gt;</translation>
    </message>
    <message>
        <source>&lt;h2&gt;&lt;font color=&quot;%1&quot;&gt;</source>
        <translation>&lt;h2&gt;&lt;font color=&quot;%1&quot;&gt;</translation>
    </message>
    <message>
        <source>&lt;/font&gt;&lt;/h2&gt;</source>
        <translation>&lt;/font&gt;&lt;/h2&gt;</translation>
    </message>
    <message>
        <source>&amp;Times</source>
        <translation>&amp;Zeiten</translation>
    </message>
    <message>
        <source>Show the time of each line</source>
        <translation>Die Uhrzeit jeder Zeile anzeigen</translation>
    </message>
    <message>
        <source>&amp;Find...</source>
        <translation>S&amp;uchen...</translation>
    </message>
    <message>
        <source>Find a text in this window (Ctrl+F)</source>
        <translation>Einen Text in diesem Fenster suchen (Strg+F)</translation>
    </message>
    <message>
        <source>&amp;Save...</source>
        <translation>S&amp;peichern...</translation>
    </message>
    <message>
        <source>Write the lines of this window, with their times, to a file</source>
        <translation>Die Zeilen dieses Fensters mit ihren Zeiten in eine Datei schreiben</translation>
    </message>
    <message>
        <source>Save the Log</source>
        <translation>Das Protokoll speichern</translation>
    </message>
    <message>
        <source>The file %1 exists. Do you wish to replace it?</source>
        <translation>Die Datei %1 ist vorhanden. Möchten Sie sie ersetzen?</translation>
    </message>
    <message>
        <source>&amp;Replace</source>
        <translation>&amp;Ersetzen</translation>
    </message>
    <message>
        <source>Unable to write the file %1: %2</source>
        <translation>Die Datei %1 kann nicht geschrieben werden: %2</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>VYRE - %1</source>
        <translation>VYRE - %1</translation>
    </message>
    <message>
        <source>&amp;Program</source>
        <translation>&amp;Programm</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>Ctrl+Q</source>
        <translation>Ctrl+Q</translation>
    </message>
    <message>
        <source>&amp;Windows</source>
        <translation>&amp;Fenster</translation>
    </message>
    <message>
        <source>&amp;Log</source>
        <translation>&amp;Protokoll</translation>
    </message>
    <message>
        <source>Ctrl+L</source>
        <translation>Ctrl+L</translation>
    </message>
    <message>
        <source>&amp;Repositories</source>
        <translation>Paket&amp;quellen</translation>
    </message>
    <message>
        <source>&amp;Edit Configuration</source>
        <translation>&amp;Konfiguration bearbeiten</translation>
    </message>
    <message>
        <source>Ctrl+E</source>
        <translation>Ctrl+E</translation>
    </message>
    <message>
        <source>&amp;Cache</source>
        <translation>&amp;Cache</translation>
    </message>
    <message>
        <source>Clean dbcache</source>
        <translation>dbcache leeren</translation>
    </message>
    <message>
        <source>Clean Packages</source>
        <translation>Pakete löschen</translation>
    </message>
    <message>
        <source>Clean Metadata</source>
        <translation>Metadaten löschen</translation>
    </message>
    <message>
        <source>Clean All</source>
        <translation>Alles löschen</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>Manual (html)</source>
        <translation>Handbuch (HTML)</translation>
    </message>
    <message>
        <source>Manual (PDF)</source>
        <translation>Handbuch (PDF)</translation>
    </message>
    <message>
        <source>&amp;About</source>
        <translation>&amp;Über VYRE</translation>
    </message>
    <message>
        <source>Packages</source>
        <translation>Pakete</translation>
    </message>
    <message>
        <source>Whole operation</source>
        <translation>Gesamter Vorgang</translation>
    </message>
    <message>
        <source>Current step</source>
        <translation>Laufender Schritt</translation>
    </message>
    <message>
        <source>Filter</source>
        <translation>Filtern</translation>
    </message>
    <message>
        <source>Search</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>Regular expression</source>
        <translation>Regulärer Ausdruck</translation>
    </message>
    <message>
        <source>View Updatable</source>
        <translation>Aktualisierbare</translation>
    </message>
    <message>
        <source>View Installable</source>
        <translation>Installierbare</translation>
    </message>
    <message>
        <source>View Removable</source>
        <translation>Entfernbare</translation>
    </message>
    <message>
        <source>View All</source>
        <translation>Alle</translation>
    </message>
    <message>
        <source>Filter for those packages which are eligible for updating,
for installing, or for removing; or show all packages</source>
        <translation>Nur die Pakete anzeigen, die aktualisiert, installiert
oder entfernt werden können; oder alle Pakete</translation>
    </message>
    <message>
        <source>Include Duplicates</source>
        <translation>Mit Duplikaten</translation>
    </message>
    <message>
        <source>Whether or not filter should include packages with duplicate names.
If unchecked, the package with the architecture closest to the base architecture is shown.</source>
        <translation>Ob Pakete mit gleichem Namen alle angezeigt werden.
Sonst steht nur das da, dessen Architektur der des Systems am nächsten ist.</translation>
    </message>
    <message>
        <source>Include Groups</source>
        <translation>Mit Gruppen</translation>
    </message>
    <message>
        <source>Whether or not filter should include package groups</source>
        <translation>Ob auch Paketgruppen angezeigt werden</translation>
    </message>
    <message>
        <source>&amp;Describe</source>
        <translation>&amp;Beschreiben</translation>
    </message>
    <message>
        <source>Pop up a window with a detailed description of the currently selected package</source>
        <translation>Ein Fenster mit einer ausführlichen Beschreibung des ausgewählten Pakets öffnen</translation>
    </message>
    <message>
        <source>Re&amp;size</source>
        <translation>Anpa&amp;ssen</translation>
    </message>
    <message>
        <source>Resize the columns and window to optimal values</source>
        <translation>Die Spalten und das Fenster auf die günstigste Größe bringen</translation>
    </message>
    <message>
        <source>Re&amp;fresh</source>
        <translation>&amp;Neu laden</translation>
    </message>
    <message>
        <source>Refresh the list of installed packages and packages available for update.
Use this to check for new updates in repositories, or if any packages were installed manually.</source>
        <translation>Die installierten und die verfügbaren Pakete neu einlesen.
Das zeigt neue Aktualisierungen der Paketquellen, und was ohne dieses Programm installiert wurde.</translation>
    </message>
    <message>
        <source>Set &amp;Install/Update of Selected</source>
        <translation>Auswahl &amp;vormerken</translation>
    </message>
    <message>
        <source>Sets the Action for all selected packages which are Not Installed to Install, and
sets the Action for all selected packages which are Installed but Out-of-date to Update.
Does not Apply Actions automatically.</source>
        <translation>Merkt alle ausgewählten Pakete, die nicht installiert sind, zum Installieren vor
und alle ausgewählten, die installiert, aber veraltet sind, zum Aktualisieren.
Die Aktionen werden damit noch nicht angewendet.</translation>
    </message>
    <message>
        <source>Set &amp;Update of Listed</source>
        <translation>Akt&amp;ualisierungen vormerken</translation>
    </message>
    <message>
        <source>Sets the Action to Update for any packages which are Installed but Out-of-date,
and which are currently listed based on the the Mode, Filter, Search, State, Duplicates, and Groups settings.
Does not Apply Actions automatically.</source>
        <translation>Merkt alle Pakete, die installiert, aber veraltet sind, zum Aktualisieren vor,
soweit sie nach Modus, Ausdruck, Zustand, Duplikaten und Gruppen gerade angezeigt werden.
Die Aktionen werden damit noch nicht angewendet.</translation>
    </message>
    <message>
        <source>&amp;Clear Actions</source>
        <translation>Aktionen ver&amp;werfen</translation>
    </message>
    <message>
        <source>Clears all specified Actions (Updates, Installs, and Removals)</source>
        <translation>Verwirft alle vorgemerkten Aktionen (Aktualisieren, Installieren und Entfernen)</translation>
    </message>
    <message>
        <source>&amp;Apply Actions</source>
        <translation>Aktionen &amp;anwenden</translation>
    </message>
    <message>
        <source>Applies the specified Actions (Updates, Installs, and Removals)</source>
        <translation>Wendet die vorgemerkten Aktionen an (Aktualisieren, Installieren und Entfernen)</translation>
    </message>
    <message>
        <source>The packages could not be read.
The Log window (Ctrl+L) shows the reason.</source>
        <translation>Die Pakete konnten nicht gelesen werden.
Das Protokoll (Strg+L) nennt den Grund.</translation>
    </message>
    <message>
        <source>No package has an update.</source>
        <translation>Für kein Paket gibt es eine Aktualisierung.</translation>
    </message>
    <message>
        <source>No package matches.</source>
        <translation>Kein Paket entspricht der Auswahl.</translation>
    </message>
    <message>
        <source>Clean RPM dbcache files (solv/solvx databases constructed from the metadata) cached locally in %1</source>
        <translation>Die dbcache-Dateien (aus den Metadaten erzeugte solv/solvx-Datenbanken) im Cache %1 löschen</translation>
    </message>
    <message>
        <source>Clean RPM packages cached locally in %1
(useful for recovering disk space)</source>
        <translation>Die RPM-Pakete im Cache %1 löschen
(schafft Platz auf dem Datenträger)</translation>
    </message>
    <message>
        <source>Clean metadata (mostly XML or compressed XML) cached locally in %1</source>
        <translation>Die Metadaten (meist XML oder komprimiertes XML) im Cache %1 löschen</translation>
    </message>
    <message>
        <source>Clean all data cached locally in %1</source>
        <translation>Alle Daten im Cache %1 löschen</translation>
    </message>
    <message>
        <source>Reading the packages...</source>
        <translation>Die Pakete werden gelesen ...</translation>
    </message>
    <message>
        <source>About</source>
        <translation>Über VYRE</translation>
    </message>
    <message>
        <source>&lt;h3&gt;VYRE %1&lt;/h3&gt;&lt;hr&gt;&lt;p&gt;VYRE, Vyrecraft, is a graphical user interface which allows a user to make modifications to the installed rpm packages on a system.&lt;/p&gt;&lt;p&gt;Capabilities:&lt;p&gt;&lt;ul&gt;&lt;li&gt;Install new packages or update existing packages by downloading them from a yum package repository&lt;/li&gt;&lt;li&gt;Remove existing packages.&lt;/li&gt;&lt;li&gt;Configure sets of repositories from which to obtain new and updated packages.&lt;/li&gt;&lt;li&gt;Examine installed packages or packages available for installation or update&lt;/li&gt;&lt;li&gt;Install, update, or remove groups of packages&lt;/li&gt;&lt;li&gt;Install or update suites of packages&lt;/li&gt;&lt;/ul&gt;&lt;p&gt;For more information, see &lt;a href=&quot;https://vyre.example/&quot;&gt;https://vyre.example/&lt;/a&gt;.&lt;/p&gt;</source>
        <translation>&lt;h3&gt;VYRE %1&lt;/h3&gt;&lt;hr&gt;&lt;p&gt;VYRE, Vyrecraft, ist eine grafische Oberfläche, mit der die auf einem System installierten rpm-Pakete verändert werden können.&lt;/p&gt;&lt;p&gt;Möglichkeiten:&lt;p&gt;&lt;ul&gt;&lt;li&gt;Neue Pakete installieren oder vorhandene aktualisieren, die dazu aus einer yum-Paketquelle heruntergeladen werden&lt;/li&gt;&lt;li&gt;Vorhandene Pakete entfernen&lt;/li&gt;&lt;li&gt;Die Paketquellen einrichten, aus denen neue und aktualisierte Pakete kommen&lt;/li&gt;&lt;li&gt;Installierte und verfügbare Pakete und Aktualisierungen ansehen&lt;/li&gt;&lt;li&gt;Gruppen von Paketen installieren, aktualisieren oder entfernen&lt;/li&gt;&lt;li&gt;Suiten von Paketen installieren oder aktualisieren&lt;/li&gt;&lt;/ul&gt;&lt;p&gt;Weitere Informationen: &lt;a href=&quot;https://vyre.example/&quot;&gt;https://vyre.example/&lt;/a&gt;.&lt;/p&gt;</translation>
    </message>
    <message>
        <source>Regular expression to compare to all fields of a package</source>
        <translation>Regulärer Ausdruck, mit dem alle Felder eines Pakets verglichen werden</translation>
    </message>
    <message>
        <source>Regular expression filter matching textual fields visible in the table</source>
        <translation>Regulärer Ausdruck, mit dem die Textspalten der Tabelle verglichen werden</translation>
    </message>
    <message>
        <source>Perform the search for the regular expression specified to the left</source>
        <translation>Nach dem regulären Ausdruck links suchen</translation>
    </message>
    <message>
        <source>Apply the filter specified to the left</source>
        <translation>Nach dem Ausdruck links filtern</translation>
    </message>
    <message>
        <source>Specify the method for using a regular expression to select packages in the table:
	Filter uses the textual fields visible in the table, as if they were separated by spaces.
	Search uses all fields in packages, including list of Files, Change Log, Requires, etc.,
	independently.  It is considerably slower.</source>
        <translation>Wie der reguläre Ausdruck die Pakete der Tabelle auswählt:
	Filtern vergleicht die Textspalten der Tabelle, als wären sie durch Leerzeichen getrennt.
	Suchen vergleicht alle Felder der Pakete, auch Dateien, Änderungsprotokoll, Abhängigkeiten usw.,
	jedes für sich.  Das dauert erheblich länger.</translation>
    </message>
    <message>
        <source>%1 (Must load extra data.)</source>
        <translation>%1 (Weitere Daten müssen geladen werden.)</translation>
    </message>
    <message>
        <source>Unlisted Actions</source>
        <translation>Ungelistete Aktionen</translation>
    </message>
    <message>
        <source>Some packages have actions specified, but because of the current
Mode, Filter, Search, State, Duplicates, and Groups settings,
these packages are not listed currently.
Pressing Apply will cause these actions to occur nonetheless.</source>
        <translation>Einige Pakete sind für Aktionen vorgemerkt, werden aber
wegen der Einstellungen für Modus, Ausdruck, Zustand,
Duplikate und Gruppen gerade nicht angezeigt.
„Aktionen anwenden“ führt diese Aktionen trotzdem aus.</translation>
    </message>
    <message>
        <source>This is not a valid regular expression:
%1</source>
        <translation>Das ist kein gültiger regulärer Ausdruck:
%1</translation>
    </message>
    <message>
        <source>There are errors in the log (Ctrl+L)</source>
        <translation>Im Protokoll stehen Fehler (Strg+L)</translation>
    </message>
    <message>
        <source>Stopped. &quot;Refresh&quot; reads the repositories again.</source>
        <translation>Angehalten. „Neu laden“ liest die Paketquellen wieder.</translation>
    </message>
    <message>
        <source>Stopped.</source>
        <translation>Angehalten.</translation>
    </message>
    <message>
        <source>Stopped. Nothing was changed.</source>
        <translation>Angehalten. Es wurde nichts geändert.</translation>
    </message>
    <message>
        <source>&amp;Advisories</source>
        <translation>&amp;Aktualisierungshinweise</translation>
    </message>
    <message>
        <source>Ctrl+D</source>
        <translation>Ctrl+D</translation>
    </message>
    <message>
        <source>The transaction has reported errors: see the log (Ctrl+L)</source>
        <translation>Die Transaktion hat Fehler gemeldet: siehe Protokoll (Strg+L)</translation>
    </message>
    <message>
        <source>VYRE cannot change packages, because it does not run as root</source>
        <translation>VYRE kann keine Pakete ändern, weil es nicht als root läuft</translation>
    </message>
    <message>
        <source>VYRE cannot close while it changes packages</source>
        <translation>VYRE kann nicht beendet werden, während es Pakete ändert</translation>
    </message>
    <message>
        <source>VYRE cannot close before the current work is complete</source>
        <translation>VYRE kann erst beendet werden, wenn die laufende Arbeit abgeschlossen ist</translation>
    </message>
    <message>
        <source>In a search, &quot;$&quot; is the end of a whole field, such as the list of files. For the end of one line, write &quot;([[:space:]]|$)&quot;.</source>
        <translation>Beim Suchen ist „$“ das Ende eines ganzen Feldes, etwa der Dateiliste. Für das Ende einer Zeile schreiben Sie „([[:space:]]|$)“.</translation>
    </message>
    <message>
        <source>&amp;History</source>
        <translation>&amp;Verlauf</translation>
    </message>
    <message>
        <source>Ctrl+H</source>
        <translation>Ctrl+H</translation>
    </message>
    <message>
        <source>Stopped. The expression does not filter the table.</source>
        <translation>Angehalten. Der Ausdruck filtert die Tabelle nicht.</translation>
    </message>
    <message>
        <source>Stopped. Removed marks that are no longer possible: %1</source>
        <translation>Angehalten. Entfernte Vormerkungen, die nicht mehr möglich sind: %1</translation>
    </message>
    <message>
        <source>Stopped. The table shows the same rows as before.</source>
        <translation>Angehalten. Die Tabelle zeigt dieselben Zeilen wie vorher.</translation>
    </message>
    <message>
        <source>The repository %1 is left out: see the log (Ctrl+L)</source>
        <translation>Die Paketquelle %1 ist ausgelassen: siehe Protokoll (Strg+L)</translation>
    </message>
    <message>
        <source>%1 repositories are left out: see the log (Ctrl+L)</source>
        <translation>%1 Paketquellen sind ausgelassen: siehe Protokoll (Strg+L)</translation>
    </message>
    <message>
        <source>With other upper and lower case letters, packages match. For both forms of a letter, write &quot;[Aa]&quot;.</source>
        <translation>Mit anderer Groß- und Kleinschreibung passen Pakete. Für beide Formen eines Buchstabens steht „[Aa]“.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; lists only packages that have an update.</source>
        <translation>„%1“ listet nur Pakete auf, für die es eine Aktualisierung gibt.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; lists only packages that are not installed.</source>
        <translation>„%1“ listet nur Pakete auf, die nicht installiert sind.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; lists only installed packages.</source>
        <translation>„%1“ listet nur installierte Pakete auf.</translation>
    </message>
    <message>
        <source>Another view may list packages that match.</source>
        <translation>Vielleicht listet eine andere Ansicht passende Pakete auf.</translation>
    </message>
</context>
<context>
    <name>Manuals</name>
    <message>
        <source>The manual is not installed: %1 is missing</source>
        <translation>Das Handbuch ist nicht installiert: %1 fehlt</translation>
    </message>
</context>
<context>
    <name>Metadata</name>
    <message>
        <source>&quot;%1&quot; where &quot;%2&quot; is expected</source>
        <translation>„%1“ statt „%2“</translation>
    </message>
    <message>
        <source>%1 packages instead of %2</source>
        <translation>%1 Pakete statt %2</translation>
    </message>
</context>
<context>
    <name>OutcomeLine</name>
    <message>
        <source>Show in &amp;Log</source>
        <translation>Im Protokoll &amp;zeigen</translation>
    </message>
    <message>
        <source>Open the Log window at the beginning of this transaction</source>
        <translation>Öffnet das Protokoll am Anfang dieser Transaktion</translation>
    </message>
</context>
<context>
    <name>PackageTable::ActionContextMenu</name>
    <message>
        <source>&amp;Update</source>
        <translation>&amp;Aktualisieren</translation>
    </message>
    <message>
        <source>&amp;Install</source>
        <translation>&amp;Installieren</translation>
    </message>
    <message>
        <source>&amp;Remove</source>
        <translation>&amp;Entfernen</translation>
    </message>
    <message>
        <source>&amp;No Action</source>
        <translation>&amp;Keine Aktion</translation>
    </message>
    <message>
        <source>&amp;Lock Version</source>
        <translation>&amp;Version sperren</translation>
    </message>
    <message>
        <source>Un&amp;lock Version</source>
        <translation>Version &amp;freigeben</translation>
    </message>
    <message>
        <source>The packages stay at their version: they get no updates.
The versionlock plug-in keeps the list of locked packages.</source>
        <translation>Die Pakete behalten ihre Version: sie werden nicht aktualisiert.
Die Erweiterung versionlock führt die Liste der gesperrten Pakete.</translation>
    </message>
    <message>
        <source>The packages get updates again.
The versionlock plug-in keeps the list of locked packages.</source>
        <translation>Die Pakete werden wieder aktualisiert.
Die Erweiterung versionlock führt die Liste der gesperrten Pakete.</translation>
    </message>
</context>
<context>
    <name>PackageTable::Columns</name>
    <message>
        <source>Package is installed; the configuration excludes it from updates and removals</source>
        <translation>Das Paket ist installiert; die Konfiguration nimmt es von Aktualisierung und Entfernen aus</translation>
    </message>
    <message>
        <source>Replaced by %1</source>
        <translation>Wird ersetzt durch %1</translation>
    </message>
    <message>
        <source>Replaces %1</source>
        <translation>Ersetzt %1</translation>
    </message>
    <message>
        <source>Installed: %1
</source>
        <translation>Installiert: %1
</translation>
    </message>
    <message>
        <source>Available: %1
</source>
        <translation>Verfügbar: %1
</translation>
    </message>
    <message>
        <source>Action</source>
        <translation>Aktion</translation>
    </message>
    <message>
        <source>Action to be performed on the package, if any: Update, Install, Remove</source>
        <translation>Was mit dem Paket geschehen soll, falls überhaupt: Aktualisieren, Installieren, Entfernen</translation>
    </message>
    <message>
        <source>State</source>
        <translation>Zustand</translation>
    </message>
    <message>
        <source>Indicates whether the package is Installed or not and, if installed, whether it is Up-to-date or not</source>
        <translation>Ob das Paket installiert ist, und wenn ja, ob es aktuell ist</translation>
    </message>
    <message>
        <source>Kind</source>
        <translation>Art</translation>
    </message>
    <message>
        <source>Whether the package is an ordinary package, a suite of packages, or a group of packages</source>
        <translation>Ob es ein gewöhnliches Paket, eine Suite von Paketen oder eine Gruppe von Paketen ist</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Name of the package</source>
        <translation>Name des Pakets</translation>
    </message>
    <message>
        <source>Version</source>
        <translation>Version</translation>
    </message>
    <message>
        <source>Version and release of the package as version-release;
If the Epoch is non-zero, includes it as epoch:version-release</source>
        <translation>Version und Release des Pakets als Version-Release;
bei einer Epoche ungleich null als Epoche:Version-Release</translation>
    </message>
    <message>
        <source>Repository</source>
        <translation>Paketquelle</translation>
    </message>
    <message>
        <source>Repository from which the most recent version of the package is available</source>
        <translation>Paketquelle mit der neuesten Version des Pakets</translation>
    </message>
    <message>
        <source>Architecture</source>
        <translation>Architektur</translation>
    </message>
    <message>
        <source>Architecture for which the package is applicable, or &quot;noarch&quot; for general-purpose packages</source>
        <translation>Architektur, für die das Paket bestimmt ist, oder „noarch“ bei Paketen für alle</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>Size of the package</source>
        <translation>Größe des Pakets</translation>
    </message>
    <message>
        <source>Build Time</source>
        <translation>Erstellt am</translation>
    </message>
    <message>
        <source>Date and time at which the package was created</source>
        <translation>Tag und Uhrzeit, zu der das Paket erstellt wurde</translation>
    </message>
    <message>
        <source>The version is locked: %1</source>
        <translation>Die Version ist gesperrt: %1</translation>
    </message>
    <message>
        <source>Advisories: %1</source>
        <translation>Aktualisierungshinweise: %1</translation>
    </message>
    <message>
        <source>Advisories: %1 and %2 more</source>
        <translation>Aktualisierungshinweise: %1 und %2 weitere</translation>
    </message>
</context>
<context>
    <name>PackageTable::Describe::Dialog</name>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>VYRE Package Description</source>
        <translation>VYRE – Paketbeschreibung</translation>
    </message>
</context>
<context>
    <name>PackageTable::Describe::Instance::Area</name>
    <message>
        <source>Details</source>
        <translation>Einzelheiten</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Anzeigen</translation>
    </message>
    <message>
        <source>%1 (must load extra data)</source>
        <translation>%1 (weitere Daten müssen geladen werden)</translation>
    </message>
    <message>
        <source>%1 %2 File List</source>
        <translation>Dateiliste von %1 %2</translation>
    </message>
    <message>
        <source>%1 %2 Change Log</source>
        <translation>Änderungsprotokoll von %1 %2</translation>
    </message>
</context>
<context>
    <name>PackageTable::Describe::Instance::RepoDialog</name>
    <message>
        <source>VYRE Repository Description</source>
        <translation>VYRE – Beschreibung der Paketquelle</translation>
    </message>
    <message>
        <source>Browse Repository</source>
        <translation>Paketquelle im Browser öffnen</translation>
    </message>
    <message>
        <source>Browse the first URL specified for the selected repository using an external web browser</source>
        <translation>Die erste URL der ausgewählten Paketquelle in einem Webbrowser öffnen</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>URLs</source>
        <translation>URLs</translation>
    </message>
    <message>
        <source>Mirror list URL</source>
        <translation>URL der Spiegelliste</translation>
    </message>
</context>
<context>
    <name>PackageTable::OtherContextMenu</name>
    <message>
        <source>&amp;Describe</source>
        <translation>&amp;Beschreiben</translation>
    </message>
    <message>
        <source>Browse Repository</source>
        <translation>Paketquelle im Browser öffnen</translation>
    </message>
</context>
<context>
    <name>PackageTable::TableStatus</name>
    <message>
        <source>Rows and marks</source>
        <translation>Zeilen und Vormerkungen</translation>
    </message>
    <message>
        <source>Listed: %1   Selected: %2   No marks</source>
        <translation>Aufgelistet: %1   Ausgewählt: %2   Nichts vorgemerkt</translation>
    </message>
    <message>
        <source>Listed: %1   Selected: %2   Marks: %3 Install, %4 Update, %5 Remove   To download: %6</source>
        <translation>Aufgelistet: %1   Ausgewählt: %2   Vorgemerkt: %3 Installieren, %4 Aktualisieren, %5 Entfernen   Herunterzuladen: %6</translation>
    </message>
    <message>
        <source>, without groups</source>
        <translation>, ohne Gruppen</translation>
    </message>
    <message>
        <source>Locked: %1</source>
        <translation>Gesperrt: %1</translation>
    </message>
    <message>
        <source>Locked: %1 (%2 selected)</source>
        <translation>Gesperrt: %1 (%2 ausgewählt)</translation>
    </message>
    <message>
        <source>The download size includes all packages that are marked for Install or Update,
but neither their dependencies nor the packages of groups and of local repositories.
Packages in the cache are not downloaded again.</source>
        <translation>Die Größe zum Herunterladen umfasst alle Pakete, die zum Installieren oder
Aktualisieren vorgemerkt sind, aber weder ihre Abhängigkeiten noch die Pakete von Gruppen und lokalen Paketquellen.
Pakete im Cache werden nicht noch einmal heruntergeladen.</translation>
    </message>
</context>
<context>
    <name>PackageTable::View</name>
    <message>
        <source>%1 cannot be marked: the configuration excludes it from updates and removals</source>
        <translation>%1 kann nicht vorgemerkt werden: Die Konfiguration nimmt das Paket von Aktualisierung und Entfernen aus</translation>
    </message>
</context>
<context>
    <name>ProgramEnd</name>
    <message>
        <source>The display is lost. The transaction goes on without it.</source>
        <translation>Die Anzeige ist verloren. Die Transaktion geht ohne sie weiter.</translation>
    </message>
    <message>
        <source>The display is lost. VYRE ends.</source>
        <translation>Die Anzeige ist verloren. VYRE endet.</translation>
    </message>
    <message>
        <source>The transaction has ended. VYRE ends.</source>
        <translation>Die Transaktion ist zu Ende. VYRE endet.</translation>
    </message>
</context>
<context>
    <name>Progress::Minion</name>
    <message>
        <source>%1 downloads</source>
        <translation>Downloads: %1</translation>
    </message>
    <message>
        <source>Complete</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <source>Retrying</source>
        <translation>Neuer Versuch</translation>
    </message>
    <message>
        <source>In Progress</source>
        <translation>Läuft</translation>
    </message>
    <message>
        <source>%1 / %2 (%3%)</source>
        <translation>%1 / %2 (%3%)</translation>
    </message>
    <message>
        <source>Not Started Yet</source>
        <translation>Noch nicht begonnen</translation>
    </message>
</context>
<context>
    <name>QAbstractSpinBox</name>
    <message>
        <source>&amp;Select All</source>
        <translation>Alles aus&amp;wählen</translation>
    </message>
    <message>
        <source>&amp;Step up</source>
        <translation>&amp;Erhöhen</translation>
    </message>
    <message>
        <source>Step &amp;down</source>
        <translation>&amp;Verringern</translation>
    </message>
</context>
<context>
    <name>QDialogButtonBox</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>QLineEdit</name>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Rückgängig</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Wiederholen</translation>
    </message>
    <message>
        <source>Cu&amp;t</source>
        <translation>&amp;Ausschneiden</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>&amp;Paste</source>
        <translation>&amp;Einfügen</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Alles auswählen</translation>
    </message>
</context>
<context>
    <name>QPlatformTheme</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Save All</source>
        <translation>Alle speichern</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>&amp;Yes</source>
        <translation>&amp;Ja</translation>
    </message>
    <message>
        <source>Yes to &amp;All</source>
        <translation>Ja, &amp;alle</translation>
    </message>
    <message>
        <source>&amp;No</source>
        <translation>&amp;Nein</translation>
    </message>
    <message>
        <source>N&amp;o to All</source>
        <translation>Nein, &amp;keine</translation>
    </message>
    <message>
        <source>Abort</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Retry</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>Ignore</source>
        <translation>Ignorieren</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Discard</source>
        <translation>Verwerfen</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>Anwenden</translation>
    </message>
    <message>
        <source>Reset</source>
        <translation>Zurücksetzen</translation>
    </message>
    <message>
        <source>Restore Defaults</source>
        <translation>Vorgaben wiederherstellen</translation>
    </message>
</context>
<context>
    <name>QScrollBar</name>
    <message>
        <source>Scroll here</source>
        <translation>Hierher blättern</translation>
    </message>
    <message>
        <source>Left edge</source>
        <translation>Linker Rand</translation>
    </message>
    <message>
        <source>Top</source>
        <translation>Anfang</translation>
    </message>
    <message>
        <source>Right edge</source>
        <translation>Rechter Rand</translation>
    </message>
    <message>
        <source>Bottom</source>
        <translation>Ende</translation>
    </message>
    <message>
        <source>Page left</source>
        <translation>Eine Seite nach links</translation>
    </message>
    <message>
        <source>Page up</source>
        <translation>Eine Seite nach oben</translation>
    </message>
    <message>
        <source>Page right</source>
        <translation>Eine Seite nach rechts</translation>
    </message>
    <message>
        <source>Page down</source>
        <translation>Eine Seite nach unten</translation>
    </message>
    <message>
        <source>Scroll left</source>
        <translation>Nach links blättern</translation>
    </message>
    <message>
        <source>Scroll up</source>
        <translation>Nach oben blättern</translation>
    </message>
    <message>
        <source>Scroll right</source>
        <translation>Nach rechts blättern</translation>
    </message>
    <message>
        <source>Scroll down</source>
        <translation>Nach unten blättern</translation>
    </message>
</context>
<context>
    <name>QWidgetTextControl</name>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Rückgängig</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Wiederholen</translation>
    </message>
    <message>
        <source>Cu&amp;t</source>
        <translation>&amp;Ausschneiden</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>&amp;Paste</source>
        <translation>&amp;Einfügen</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Alles auswählen</translation>
    </message>
    <message>
        <source>Copy &amp;Link Location</source>
        <translation>Adresse des &amp;Links kopieren</translation>
    </message>
</context>
<context>
    <name>Repo::File</name>
    <message>
        <source>%1 is left alone: it is a broken link.</source>
        <translation>%1 bleibt unberührt: Es ist ein Verweis, dessen Ziel fehlt.</translation>
    </message>
    <message>
        <source>%1 is left alone: it is not a regular file.</source>
        <translation>%1 bleibt unberührt: sie ist keine gewöhnliche Datei.</translation>
    </message>
    <message>
        <source>%1 is left alone, and its repositories are not used: it is larger than %2 MB.</source>
        <translation>%1 bleibt unberührt, und die Paketquellen darin werden nicht benutzt: Die Datei ist größer als %2 MB.</translation>
    </message>
    <message>
        <source>%1 is left alone, and its repositories are not used: it is not a plain text file.</source>
        <translation>%1 bleibt unberührt, und die Paketquellen darin werden nicht benutzt: Es ist keine reine Textdatei.</translation>
    </message>
    <message>
        <source>%1 is left alone, and its repositories are not used: one of them is larger than %2 kB.</source>
        <translation>%1 bleibt unberührt, und die Paketquellen darin werden nicht benutzt: Eine davon ist größer als %2 kB.</translation>
    </message>
</context>
<context>
    <name>RepoAuth::Dialog</name>
    <message>
        <source>VYRE Authentication</source>
        <translation>VYRE – Anmeldung</translation>
    </message>
    <message>
        <source>Some configured repositories require authentication</source>
        <translation>Einige Paketquellen verlangen eine Anmeldung</translation>
    </message>
    <message>
        <source>Identifier</source>
        <translation>Kennung</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>URLs</source>
        <translation>URLs</translation>
    </message>
    <message>
        <source>Mirror list URL</source>
        <translation>URL der Spiegelliste</translation>
    </message>
    <message>
        <source>Authentication name for a repository using the vantor authentication method</source>
        <translation>Anmeldename für eine Paketquelle mit Vantor-Anmeldung</translation>
    </message>
    <message>
        <source>Authentication password for a repository using the vantor authentication method</source>
        <translation>Passwort für eine Paketquelle mit Vantor-Anmeldung</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>Disable for Session</source>
        <translation>Für diese Sitzung abschalten</translation>
    </message>
    <message>
        <source>Skip All</source>
        <translation>Alle überspringen</translation>
    </message>
    <message>
        <source>Apply to All</source>
        <translation>Auf alle anwenden</translation>
    </message>
    <message>
        <source>Apply to All with this Host</source>
        <translation>Auf alle dieses Servers anwenden</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
    <message>
        <source>VYRE will write the name and the password to the file %1. Then only the file&apos;s owner and group can read the file.</source>
        <translation>VYRE wird den Namen und das Passwort in die Datei %1 schreiben. Dann können nur ihr Besitzer und ihre Gruppe die Datei lesen.</translation>
    </message>
</context>
<context>
    <name>RepoBrowse</name>
    <message>
        <source>Error</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>Repository configuration has no URL</source>
        <translation>Für die Paketquelle ist keine URL angegeben</translation>
    </message>
    <message>
        <source>There is no configured repository &quot;%1&quot;</source>
        <translation>Es gibt keine Paketquelle „%1“</translation>
    </message>
</context>
<context>
    <name>RepoEditor::Config</name>
    <message>
        <source>Identifier</source>
        <translation>Kennung</translation>
    </message>
    <message>
        <source>Unique identifier for the repository</source>
        <translation>Eindeutige Kennung der Paketquelle</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Description of the repository</source>
        <translation>Beschreibung der Paketquelle</translation>
    </message>
    <message>
        <source>URLs</source>
        <translation>URLs</translation>
    </message>
    <message>
        <source>List of URLs to the repository.
If more than one is specified, they all should be identical mirrors,
and will provide redundancy if some URLs are unreachable.</source>
        <translation>Liste der URLs der Paketquelle.
Sind es mehrere, so sollten sie alle denselben Inhalt haben;
sie ersetzen einander, wenn einige davon nicht erreichbar sind.</translation>
    </message>
    <message>
        <source>Mirror list URL</source>
        <translation>URL der Spiegelliste</translation>
    </message>
    <message>
        <source>URL to a file containing a list of URLs to the repository.</source>
        <translation>URL einer Datei mit einer Liste von URLs der Paketquelle.</translation>
    </message>
    <message>
        <source>Vantor Authentication</source>
        <translation>Vantor-Anmeldung</translation>
    </message>
    <message>
        <source>Authentication name for a repository using the vantor authentication method</source>
        <translation>Anmeldename für eine Paketquelle mit Vantor-Anmeldung</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
    <message>
        <source>Authentication password for a repository using the vantor authentication method</source>
        <translation>Passwort für eine Paketquelle mit Vantor-Anmeldung</translation>
    </message>
    <message>
        <source>Repository Options</source>
        <translation>Optionen der Paketquelle</translation>
    </message>
    <message>
        <source>Any other yum options for this repository.  See yum.conf(5)</source>
        <translation>Alle weiteren yum-Optionen dieser Paketquelle.  Siehe yum.conf(5)</translation>
    </message>
    <message>
        <source>Other Options:</source>
        <translation>Weitere Optionen:</translation>
    </message>
    <message>
        <source>No</source>
        <translation>Nein</translation>
    </message>
    <message>
        <source>Default</source>
        <translation>Standard</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
    <message>
        <source>Enabled</source>
        <translation>Eingeschaltet</translation>
    </message>
    <message>
        <source>Whether or not the repository is enabled for use</source>
        <translation>Ob die Paketquelle benutzt wird</translation>
    </message>
    <message>
        <source>Check GPG Keys</source>
        <translation>GPG-Signaturen prüfen</translation>
    </message>
    <message>
        <source>Whether or not GPG key signatures of packages from the repository are checked to ensure authenticity</source>
        <translation>Ob die GPG-Signaturen der Pakete dieser Quelle geprüft werden, um ihre Echtheit sicherzustellen</translation>
    </message>
    <message>
        <source>Configuration File (expert)</source>
        <translation>Konfigurationsdatei (für Fachleute)</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Name of the yum configuration file into which to place this repository configuration.
If left blank, defaults to the repository&apos;s identifier</source>
        <translation>Name der yum-Konfigurationsdatei, in der diese Paketquelle stehen soll.
Bleibt das Feld leer, so ist es die Kennung der Paketquelle</translation>
    </message>
    <message>
        <source>Sort Position</source>
        <translation>Position</translation>
    </message>
    <message>
        <source>A numeric sort key which determines the order of this repository configuration
in a configuration file which contains multiple configurations</source>
        <translation>Eine Zahl, nach der diese Paketquelle eingereiht wird,
wenn mehrere in derselben Konfigurationsdatei stehen</translation>
    </message>
    <message>
        <source>%1 %2</source>
        <translation>%1 %2</translation>
    </message>
    <message>
        <source>(Yes)</source>
        <translation>(Ja)</translation>
    </message>
    <message>
        <source>(No)</source>
        <translation>(Nein)</translation>
    </message>
    <message>
        <source>Identifier has characters other than letters, digits and -_.:</source>
        <translation>Die Kennung enthält andere Zeichen als Buchstaben, Ziffern und -_.:</translation>
    </message>
    <message>
        <source>Identifier main is reserved for the main section</source>
        <translation>Die Kennung main ist dem Hauptabschnitt vorbehalten</translation>
    </message>
    <message>
        <source>Other Options have a line that begins with a bracket</source>
        <translation>In den weiteren Optionen beginnt eine Zeile mit einer Klammer</translation>
    </message>
    <message>
        <source>Other Options begin with a blank</source>
        <translation>Die weiteren Optionen beginnen mit einem Leerzeichen</translation>
    </message>
    <message>
        <source>No Identifier specified</source>
        <translation>Keine Kennung angegeben</translation>
    </message>
    <message>
        <source>No URLs or Mirror list URL specified</source>
        <translation>Weder URLs noch URL der Spiegelliste angegeben</translation>
    </message>
    <message>
        <source>File is not in any reposdir directory</source>
        <translation>Die Datei liegt in keinem reposdir-Verzeichnis</translation>
    </message>
    <message>
        <source>File lacks .repo suffix</source>
        <translation>Der Datei fehlt die Endung .repo</translation>
    </message>
    <message>
        <source>No Vantor Authentication Name specified</source>
        <translation>Kein Anmeldename der Vantor-Anmeldung angegeben</translation>
    </message>
    <message>
        <source>No Vantor Authentication Password specified</source>
        <translation>Kein Passwort der Vantor-Anmeldung angegeben</translation>
    </message>
</context>
<context>
    <name>RepoEditor::ConfigDialog</name>
    <message>
        <source>VYRE Repository Configuration</source>
        <translation>VYRE – Konfiguration einer Paketquelle</translation>
    </message>
    <message>
        <source>Reset</source>
        <translation>Zurücksetzen</translation>
    </message>
    <message>
        <source>Undo changes to this repository configuration</source>
        <translation>Die Änderungen an dieser Paketquelle verwerfen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Undo changes to this repository configuration and close the window</source>
        <translation>Die Änderungen an dieser Paketquelle verwerfen und das Fenster schließen</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Apply changes to all repository configurations, and close the window</source>
        <translation>Die Änderungen an allen Paketquellen anwenden und das Fenster schließen</translation>
    </message>
    <message>
        <source>Repository Editor</source>
        <translation>Paketquellen bearbeiten</translation>
    </message>
    <message>
        <source>The changes to the repository are not applied. Close the window and drop the changes?</source>
        <translation>Die Änderungen an der Paketquelle sind nicht angewendet. Das Fenster schließen und die Änderungen verwerfen?</translation>
    </message>
</context>
<context>
    <name>RepoEditor::ContextMenu</name>
    <message>
        <source>Edit</source>
        <translation>Bearbeiten</translation>
    </message>
    <message>
        <source>Browse Repository</source>
        <translation>Paketquelle im Browser öffnen</translation>
    </message>
</context>
<context>
    <name>RepoEditor::Dialog</name>
    <message>
        <source>VYRE Repository Configuration Editor</source>
        <translation>VYRE – Paketquellen bearbeiten</translation>
    </message>
    <message>
        <source>Browse Repository</source>
        <translation>Paketquelle im Browser öffnen</translation>
    </message>
    <message>
        <source>Browse the first URL specified for the selected repository using an external web browser</source>
        <translation>Die erste URL der ausgewählten Paketquelle in einem Webbrowser öffnen</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Bearbeiten</translation>
    </message>
    <message>
        <source>Edit the selected repository configuration</source>
        <translation>Die ausgewählte Paketquelle bearbeiten</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>Hinzufügen</translation>
    </message>
    <message>
        <source>Create a new repository configuration from scratch</source>
        <translation>Eine neue, leere Paketquelle anlegen</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Create a new repository configuration based on the selected repository</source>
        <translation>Eine neue Paketquelle nach dem Muster der ausgewählten anlegen</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>Remove the selected repository configuration</source>
        <translation>Die ausgewählte Paketquelle entfernen</translation>
    </message>
    <message>
        <source>Two or more repositories have the Identifier, %1</source>
        <translation>Mehrere Paketquellen haben die Kennung %1</translation>
    </message>
    <message>
        <source>Reset All</source>
        <translation>Alles zurücksetzen</translation>
    </message>
    <message>
        <source>Undo changes to all repository configurations since the last Apply or opening of the dialog</source>
        <translation>Die Änderungen an allen Paketquellen seit dem letzten Anwenden oder seit dem Öffnen des Fensters verwerfen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Undo changes to all repository configurations since the last Apply or opening of the dialog, and close the window</source>
        <translation>Die Änderungen an allen Paketquellen seit dem letzten Anwenden oder seit dem Öffnen des Fensters verwerfen und das Fenster schließen</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>Anwenden</translation>
    </message>
    <message>
        <source>Apply changes to all repository configurations, but do not close the window</source>
        <translation>Die Änderungen an allen Paketquellen anwenden, ohne das Fenster zu schließen</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Apply changes to all repository configurations, and close the window</source>
        <translation>Die Änderungen an allen Paketquellen anwenden und das Fenster schließen</translation>
    </message>
    <message>
        <source>A repository has no Identifier</source>
        <translation>Eine Paketquelle hat keine Kennung</translation>
    </message>
    <message>
        <source>Unapplied Configuration Changes</source>
        <translation>Noch nicht angewendete Änderungen</translation>
    </message>
    <message>
        <source>Repository Editor</source>
        <translation>Paketquellen bearbeiten</translation>
    </message>
    <message>
        <source>The changes to the repositories are not applied. Close the window and drop the changes?</source>
        <translation>Die Änderungen an den Paketquellen sind nicht angewendet. Das Fenster schließen und die Änderungen verwerfen?</translation>
    </message>
</context>
<context>
    <name>RepoEditor::Model</name>
    <message>
        <source>Sess</source>
        <translation>Sitz.</translation>
    </message>
    <message>
        <source>Perm</source>
        <translation>Dauer</translation>
    </message>
    <message>
        <source>Identifier</source>
        <translation>Kennung</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Whether or not the repository is used during this session.
It overrides the persistent Enabled flag in the repository configuration.</source>
        <translation>Ob die Paketquelle in dieser Sitzung benutzt wird.
Das geht dem dauerhaften Schalter „Eingeschaltet“ der Paketquelle vor.</translation>
    </message>
    <message>
        <source>Whether or not the repository is configured to be enabled by default.
It can be overridden for a particular session.</source>
        <translation>Ob die Paketquelle dauerhaft eingeschaltet ist.
Für eine einzelne Sitzung kann es anders bestimmt werden.</translation>
    </message>
    <message>
        <source>Unique identifier for the repository</source>
        <translation>Eindeutige Kennung der Paketquelle</translation>
    </message>
    <message>
        <source>Description of the repository</source>
        <translation>Beschreibung der Paketquelle</translation>
    </message>
    <message>
        <source>Repository is enabled for this session</source>
        <translation>Die Paketquelle wird in dieser Sitzung benutzt</translation>
    </message>
    <message>
        <source>Repository is not enabled for this session</source>
        <translation>Die Paketquelle wird in dieser Sitzung nicht benutzt</translation>
    </message>
    <message>
        <source>Repository is configured to be enabled</source>
        <translation>Die Paketquelle ist dauerhaft eingeschaltet</translation>
    </message>
    <message>
        <source>Repository is not configured to be enabled</source>
        <translation>Die Paketquelle ist dauerhaft ausgeschaltet</translation>
    </message>
</context>
<context>
    <name>RepoEditor::SortFilterProxyModel</name>
    <message>
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
    <message>
        <source>No</source>
        <translation>Nein</translation>
    </message>
</context>
<context>
    <name>RepoEditor::View</name>
    <message>
        <source>Repositories</source>
        <translation>Paketquellen</translation>
    </message>
</context>
<context>
    <name>ScriptValues</name>
    <message>
        <source>Internal error: YumIO::pyString called with NULL</source>
        <translation>Interner Fehler: YumIO::pyString wurde mit NULL aufgerufen</translation>
    </message>
    <message>
        <source>Internal error: YumIO::pyString did not understand type: %1</source>
        <translation>Interner Fehler: YumIO::pyString: unbekannter Typ: %1</translation>
    </message>
    <message>
        <source>Internal error: YumIO::pyStringX did not understand type: %1</source>
        <translation>Interner Fehler: YumIO::pyStringX: unbekannter Typ: %1</translation>
    </message>
    <message>
        <source>Internal error: YumIO::pyTimeDec did not understand: %1</source>
        <translation>Interner Fehler: YumIO::pyTimeDec: nicht verstanden: %1</translation>
    </message>
    <message>
        <source>Internal error: YumIO::pyTime did not understand type: %1</source>
        <translation>Interner Fehler: YumIO::pyTime: unbekannter Typ: %1</translation>
    </message>
    <message>
        <source>Internal error: YumIO::pyTimeDec did not understand type: %1</source>
        <translation>Interner Fehler: YumIO::pyTimeDec: unbekannter Typ: %1</translation>
    </message>
    <message>
        <source>Internal error: YumIO::pyDate did not understand type: %1</source>
        <translation>Interner Fehler: YumIO::pyDate: unbekannter Typ: %1</translation>
    </message>
    <message>
        <source>Internal error: YumIO::pyDate did not understand weekday type: %1</source>
        <translation>Interner Fehler: YumIO::pyDate: unbekannter Typ des Wochentags: %1</translation>
    </message>
    <message>
        <source>Internal error: YumIO::pyDate found out-of-bounds month: %1</source>
        <translation>Interner Fehler: YumIO::pyDate: Monat außerhalb des Bereichs: %1</translation>
    </message>
    <message>
        <source>Internal error: YumIO::pyDate found out-of-bounds weekday: %1</source>
        <translation>Interner Fehler: YumIO::pyDate: Wochentag außerhalb des Bereichs: %1</translation>
    </message>
    <message>
        <source>Internal error: package size not understood: %1</source>
        <translation>Interner Fehler: Paketgröße nicht verstanden: %1</translation>
    </message>
    <message>
        <source>Internal error: package size result not understood</source>
        <translation>Interner Fehler: Ergebnis für die Paketgröße nicht verstanden</translation>
    </message>
    <message>
        <source>Internal error: package size not understood</source>
        <translation>Interner Fehler: Paketgröße nicht verstanden</translation>
    </message>
    <message>
        <source>Eb</source>
        <translation>Eb</translation>
    </message>
    <message>
        <source>Pb</source>
        <translation>Pb</translation>
    </message>
    <message>
        <source>Tb</source>
        <translation>Tb</translation>
    </message>
    <message>
        <source>Gb</source>
        <translation>Gb</translation>
    </message>
    <message>
        <source>Mb</source>
        <translation>Mb</translation>
    </message>
    <message>
        <source>Kb</source>
        <translation>Kb</translation>
    </message>
    <message>
        <source>b</source>
        <translation>b</translation>
    </message>
    <message>
        <source>%1 %3:%4-%5 (%2)</source>
        <translation>%1 %3:%4-%5 (%2)</translation>
    </message>
    <message>
        <source>%1 %3-%4 (%2)</source>
        <translation>%1 %3-%4 (%2)</translation>
    </message>
    <message>
        <source> [%1]</source>
        <translation> [%1]</translation>
    </message>
    <message>
        <source>Internal error: yum/dnf version not understood: %1 errno=%2 (%3)</source>
        <translation>Interner Fehler: Version von yum/dnf nicht verstanden: %1 errno=%2 (%3)</translation>
    </message>
</context>
<context>
    <name>ScrollableErrorDialog</name>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>StopButton</name>
    <message>
        <source>Stopping...</source>
        <translation>Hält an ...</translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation>Anhal&amp;ten</translation>
    </message>
    <message>
        <source>Stops the current operation (Esc).
VYRE keeps the listed packages and all marks, unless a repository has changed.</source>
        <translation>Hält den laufenden Vorgang an (Esc).
VYRE behält die aufgelisteten Pakete und alle Vormerkungen, außer wenn sich eine Paketquelle geändert hat.</translation>
    </message>
    <message>
        <source>The current step cannot be stopped. It ends by itself.</source>
        <translation>Der laufende Schritt lässt sich nicht anhalten. Er endet von selbst.</translation>
    </message>
    <message>
        <source>The operation stops as soon as the current step allows it.</source>
        <translation>Der Vorgang hält an, sobald der laufende Schritt es zulässt.</translation>
    </message>
    <message>
        <source>Packages are being installed, updated or removed now.
After a stop, the system would have only some of these changes.</source>
        <translation>Jetzt werden Pakete installiert, aktualisiert oder entfernt.
Nach einem Abbruch hätte das System nur einen Teil dieser Änderungen.</translation>
    </message>
    <message>
        <source>Stops VYRE while it reads repositories or downloads packages.
No operation is running now.</source>
        <translation>Hält VYRE an, während es Paketquellen liest oder Pakete herunterlädt.
Zurzeit läuft kein Vorgang.</translation>
    </message>
    <message>
        <source>Stops the current operation (Esc).
VYRE then lists the installed packages, and the packages whose metadata are in the cache.</source>
        <translation>Hält den laufenden Vorgang an (Esc).
VYRE listet dann die installierten Pakete auf, und die Pakete, deren Metadaten im Cache sind.</translation>
    </message>
    <message>
        <source>Stops the current operation (Esc).
VYRE has deleted the metadata. After a stop, it lists the installed packages, and only
the packages of repositories whose metadata it has already read again.
The marks of all other packages are lost.</source>
        <translation>Hält den laufenden Vorgang an (Esc).
VYRE hat die Metadaten gelöscht. Nach einem Halt listet es die installierten Pakete auf, und nur
die Pakete von Paketquellen, deren Metadaten es schon wieder gelesen hat.
Die Vormerkungen aller anderen Pakete gehen verloren.</translation>
    </message>
</context>
<context>
    <name>TextDialog</name>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>&amp;Find...</source>
        <translation>S&amp;uchen...</translation>
    </message>
    <message>
        <source>Find a text in this window (Ctrl+F)</source>
        <translation>Einen Text in diesem Fenster suchen (Strg+F)</translation>
    </message>
</context>
<context>
    <name>TransactionOutcome</name>
    <message>
        <source>%1 installed</source>
        <translation>%1 installiert</translation>
    </message>
    <message>
        <source>%1 updated</source>
        <translation>%1 aktualisiert</translation>
    </message>
    <message>
        <source>%1 downgraded</source>
        <translation>%1 herabgestuft</translation>
    </message>
    <message>
        <source>%1 reinstalled</source>
        <translation>%1 erneut installiert</translation>
    </message>
    <message>
        <source>%1 removed</source>
        <translation>%1 entfernt</translation>
    </message>
    <message>
        <source>1 group installed</source>
        <translation>1 Gruppe installiert</translation>
    </message>
    <message>
        <source>%1 groups installed</source>
        <translation>%1 Gruppen installiert</translation>
    </message>
    <message>
        <source>1 group updated</source>
        <translation>1 Gruppe aktualisiert</translation>
    </message>
    <message>
        <source>%1 groups updated</source>
        <translation>%1 Gruppen aktualisiert</translation>
    </message>
    <message>
        <source>1 group removed</source>
        <translation>1 Gruppe entfernt</translation>
    </message>
    <message>
        <source>%1 groups removed</source>
        <translation>%1 Gruppen entfernt</translation>
    </message>
    <message>
        <source>1 module changed</source>
        <translation>1 Modul geändert</translation>
    </message>
    <message>
        <source>%1 modules changed</source>
        <translation>%1 Module geändert</translation>
    </message>
    <message>
        <source>1 reason changed</source>
        <translation>1 Installationsgrund geändert</translation>
    </message>
    <message>
        <source>%1 reasons changed</source>
        <translation>%1 Installationsgründe geändert</translation>
    </message>
    <message>
        <source>%1 failed</source>
        <translation>%1 fehlgeschlagen</translation>
    </message>
    <message>
        <source>Nothing was changed</source>
        <translation>Es wurde nichts geändert</translation>
    </message>
    <message>
        <source>the scriptlet of %1 failed</source>
        <translation>Skript von %1 fehlgeschlagen</translation>
    </message>
    <message>
        <source>the scriptlets of %1 and %2 more failed</source>
        <translation>Skripte von %1 und %2 weiteren fehlgeschlagen</translation>
    </message>
    <message>
        <source>a restart is needed</source>
        <translation>Neustart nötig</translation>
    </message>
    <message>
        <source>%1 left out</source>
        <translation>%1 ausgelassen</translation>
    </message>
    <message>
        <source>The scriptlets of these packages failed:</source>
        <translation>Skripte dieser Pakete sind fehlgeschlagen:</translation>
    </message>
    <message>
        <source>The log names %1 more.</source>
        <translation>Das Protokoll nennt %1 weitere.</translation>
    </message>
    <message>
        <source>No packages were changed, but signing keys were imported</source>
        <translation>Es wurden keine Pakete geändert, aber Signaturschlüssel importiert</translation>
    </message>
    <message>
        <source>Stopped: no packages were changed, but signing keys were imported</source>
        <translation>Angehalten: Es wurden keine Pakete geändert, aber Signaturschlüssel importiert</translation>
    </message>
    <message>
        <source>Stopped: nothing was changed</source>
        <translation>Angehalten: Nichts wurde geändert</translation>
    </message>
</context>
<context>
    <name>VersionLocksCommand</name>
    <message>
        <source>Removed marks that a version lock does not permit: %1</source>
        <translation>Entfernte Vormerkungen, die eine Versionssperre nicht erlaubt: %1</translation>
    </message>
    <message>
        <source>Removed marks that are no longer possible: %1</source>
        <translation>Entfernte Vormerkungen, die nicht mehr möglich sind: %1</translation>
    </message>
</context>
<context>
    <name>Words</name>
    <message>
        <source>Update</source>
        <translation>Aktualisieren</translation>
    </message>
    <message>
        <source>Install</source>
        <translation>Installieren</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>No Action</source>
        <translation>Keine Aktion</translation>
    </message>
    <message>
        <source>Update package</source>
        <translation>Paket aktualisieren</translation>
    </message>
    <message>
        <source>Install package</source>
        <translation>Paket installieren</translation>
    </message>
    <message>
        <source>Remove package</source>
        <translation>Paket entfernen</translation>
    </message>
    <message>
        <source>Out-of-date</source>
        <translation>Veraltet</translation>
    </message>
    <message>
        <source>Not Installed</source>
        <translation>Nicht installiert</translation>
    </message>
    <message>
        <source>Up-to-date</source>
        <translation>Aktuell</translation>
    </message>
    <message>
        <source>Available for update</source>
        <translation>Aktualisierbar</translation>
    </message>
    <message>
        <source>Available for installation</source>
        <translation>Installierbar</translation>
    </message>
    <message>
        <source>Installed</source>
        <translation>Installiert</translation>
    </message>
    <message>
        <source>Package is available to update an out-of-date version</source>
        <translation>Das Paket ist veraltet und kann aktualisiert werden</translation>
    </message>
    <message>
        <source>Package is available for installation</source>
        <translation>Das Paket kann installiert werden</translation>
    </message>
    <message>
        <source>Package is installed and up-to-date</source>
        <translation>Das Paket ist installiert und aktuell</translation>
    </message>
    <message>
        <source>Suite</source>
        <translation>Suite</translation>
    </message>
    <message>
        <source>Group</source>
        <translation>Gruppe</translation>
    </message>
    <message>
        <source>Package</source>
        <translation>Paket</translation>
    </message>
    <message>
        <source>Suite of packages</source>
        <translation>Suite von Paketen</translation>
    </message>
    <message>
        <source>Group of packages</source>
        <translation>Gruppe von Paketen</translation>
    </message>
    <message>
        <source>Ordinary package</source>
        <translation>Gewöhnliches Paket</translation>
    </message>
</context>
<context>
    <name>YumConfIO</name>
    <message>
        <source>Unable to read yum configuration file %1</source>
        <translation>Die yum-Konfigurationsdatei %1 kann nicht gelesen werden</translation>
    </message>
    <message>
        <source>Unable to stat repository configuration file %1</source>
        <translation>Die Eigenschaften der Konfigurationsdatei %1 können nicht gelesen werden</translation>
    </message>
    <message>
        <source>Unable to read repository configuration file %1</source>
        <translation>Die Konfigurationsdatei %1 kann nicht gelesen werden</translation>
    </message>
    <message>
        <source>Malformed section name in line: %1</source>
        <translation>Fehlerhafter Abschnittsname in der Zeile: %1</translation>
    </message>
    <message>
        <source>Error reading repository configuration file %1</source>
        <translation>Fehler beim Lesen der Konfigurationsdatei %1</translation>
    </message>
    <message>
        <source>A repository has no Identifier.  It will be removed.</source>
        <translation>Eine Paketquelle hat keine Kennung.  Sie wird entfernt.</translation>
    </message>
    <message>
        <source>Two or more repositories have the same Identifier(s), %1.  Only one repository will be applied for each Identifier.</source>
        <translation>Mehrere Paketquellen haben dieselbe Kennung: %1.  Für jede Kennung wird nur eine Paketquelle angewendet.</translation>
    </message>
    <message>
        <source>Repository Editor</source>
        <translation>Paketquellen bearbeiten</translation>
    </message>
    <message>
        <source>  Proceed?</source>
        <translation>  Fortfahren?</translation>
    </message>
    <message>
        <source>Unable to write repository configuration file %1</source>
        <translation>Die Konfigurationsdatei %1 kann nicht geschrieben werden</translation>
    </message>
    <message>
        <source>Unable to unlink repository configuration file %1</source>
        <translation>Die Konfigurationsdatei %1 kann nicht gelöscht werden</translation>
    </message>
    <message>
        <source>; errno = %1 (%2).</source>
        <translation>; errno = %1 (%2).</translation>
    </message>
    <message>
        <source>VYRE Repository Editor Error</source>
        <translation>VYRE – Fehler beim Bearbeiten der Paketquellen</translation>
    </message>
    <message>
        <source>%1, section [%2]: VYRE reads &quot;%3&quot; as enabled, and writes it as enabled. Only 0 disables it.</source>
        <translation>%1, Abschnitt [%2]: VYRE liest „%3“ als eingeschaltet und schreibt es als eingeschaltet. Nur 0 schaltet aus.</translation>
    </message>
    <message>
        <source>%1 contains letters outside ASCII. If VYRE writes the file, each of these letters becomes two wrong letters.</source>
        <translation>%1 enthält Zeichen außerhalb von ASCII. Wenn VYRE die Datei schreibt, werden aus jedem dieser Zeichen zwei falsche Zeichen.</translation>
    </message>
    <message>
        <source>VYRE was interrupted while it wrote a configuration file. The previous text is in %1</source>
        <translation>VYRE wurde unterbrochen, als es eine Konfigurationsdatei schrieb. Der vorherige Text steht in %1</translation>
    </message>
    <message>
        <source>VYRE has written nothing: other programs have created or changed these files since VYRE last read the configuration, or VYRE cannot edit them.
%1
Read all files again, and lose your changes?</source>
        <translation>VYRE hat nichts geschrieben: Andere Programme haben diese Dateien angelegt oder geändert, seit VYRE die Konfiguration zuletzt gelesen hat, oder VYRE kann sie nicht bearbeiten.
%1
Alle Dateien neu lesen und Ihre Änderungen verlieren?</translation>
    </message>
    <message>
        <source>%1 contains a password. From now on, only the file&apos;s owner and group can read the file.</source>
        <translation>%1 enthält ein Passwort. Von jetzt an können nur ihr Besitzer und ihre Gruppe die Datei lesen.</translation>
    </message>
    <message>
        <source>Other programs have changed these files since VYRE last read them. You have not edited these files, and VYRE has not changed them.
%1</source>
        <translation>Andere Programme haben diese Dateien geändert, seit VYRE sie zuletzt gelesen hat. Sie haben diese Dateien nicht bearbeitet, und VYRE hat sie nicht geändert.
%1</translation>
    </message>
</context>
<context>
    <name>YumIO</name>
    <message>
        <source>Unable to release yum lock</source>
        <translation>Die Sperre von yum kann nicht freigegeben werden</translation>
    </message>
    <message>
        <source>The root directory %1 does not exist</source>
        <translation>Das Wurzelverzeichnis %1 gibt es nicht</translation>
    </message>
    <message>
        <source>Internal error: cannot import python datetime</source>
        <translation>Interner Fehler: Das Python-Modul datetime kann nicht importiert werden</translation>
    </message>
    <message>
        <source>Internal error: cannot find python rpm module</source>
        <translation>Interner Fehler: Das Python-Modul rpm ist nicht zu finden</translation>
    </message>
    <message>
        <source>Internal error: cannot find python rpm dict</source>
        <translation>Interner Fehler: Das Verzeichnis des Python-Moduls rpm ist nicht zu finden</translation>
    </message>
    <message>
        <source>Internal error: unable to open YumIO.py</source>
        <translation>Interner Fehler: YumIO.py kann nicht geöffnet werden</translation>
    </message>
    <message>
        <source>Internal error: unable to execute YumIO.py</source>
        <translation>Interner Fehler: YumIO.py kann nicht ausgeführt werden</translation>
    </message>
    <message>
        <source>Internal error: cannot find python YumIO</source>
        <translation>Interner Fehler: Die Python-Klasse YumIO ist nicht zu finden</translation>
    </message>
    <message>
        <source>Unable to initialize</source>
        <translation>Die Vorbereitung ist fehlgeschlagen</translation>
    </message>
    <message>
        <source>Internal error: cannot create python yumIO</source>
        <translation>Interner Fehler: Das Python-Objekt yumIO kann nicht erzeugt werden</translation>
    </message>
    <message>
        <source>Internal error: yumIO.base not evaluable</source>
        <translation>Interner Fehler: yumIO.base ist nicht auswertbar</translation>
    </message>
    <message>
        <source>Applying</source>
        <translation>Aktionen werden angewendet</translation>
    </message>
    <message>
        <source>Must be run as root to apply changes</source>
        <translation>Änderungen kann nur root anwenden</translation>
    </message>
    <message>
        <source>Checking Dependencies: Total Progress</source>
        <translation>Abhängigkeiten prüfen: Gesamtfortschritt</translation>
    </message>
    <message>
        <source>Resolve Dependencies</source>
        <translation>Abhängigkeiten auflösen</translation>
    </message>
    <message>
        <source>Internal error: python exception occurred from C code.</source>
        <translation>Interner Fehler: In C-Code ist eine Python-Ausnahme aufgetreten.</translation>
    </message>
    <message>
        <source>Unable to add group %1 to grp_updates list</source>
        <translation>Die Gruppe %1 kann nicht in die Liste grp_updates aufgenommen werden</translation>
    </message>
    <message>
        <source>Unable to find installed version for package update %1</source>
        <translation>Die installierte Version zur Aktualisierung des Pakets %1 ist nicht zu finden</translation>
    </message>
    <message>
        <source>Unable to add new package to pair for updated package %1</source>
        <translation>Das neue Paket kann nicht in das Paar für das aktualisierte Paket %1 aufgenommen werden</translation>
    </message>
    <message>
        <source>Unable to add old package to pair for updated package %1</source>
        <translation>Das alte Paket kann nicht in das Paar für das aktualisierte Paket %1 aufgenommen werden</translation>
    </message>
    <message>
        <source>Unable to add package %1 to updates list</source>
        <translation>Das Paket %1 kann nicht in die Liste updates aufgenommen werden</translation>
    </message>
    <message>
        <source>Unable to add group %1 to grp_installs list</source>
        <translation>Die Gruppe %1 kann nicht in die Liste grp_installs aufgenommen werden</translation>
    </message>
    <message>
        <source>Unable to add package %1 to installs list</source>
        <translation>Das Paket %1 kann nicht in die Liste installs aufgenommen werden</translation>
    </message>
    <message>
        <source>Unable to add group %1 to grp_removes list</source>
        <translation>Die Gruppe %1 kann nicht in die Liste grp_removes aufgenommen werden</translation>
    </message>
    <message>
        <source>Unable to add package %1 to removes list</source>
        <translation>Das Paket %1 kann nicht in die Liste removes aufgenommen werden</translation>
    </message>
    <message>
        <source>apply changes</source>
        <translation>Änderungen anwenden</translation>
    </message>
    <message>
        <source>Internal error: applyGrpConflict unexpected package state
</source>
        <translation>Interner Fehler: applyGrpConflict: unerwarteter Zustand eines Pakets
</translation>
    </message>
    <message>
        <source>ERROR</source>
        <translation>FEHLER</translation>
    </message>
    <message>
        <source>Package %1 is included in group %2 which was marked for %3, so the package would be marked for %4.
But the package also was marked individually for %5.
Do you wish to proceed?</source>
        <translation>Das Paket %1 gehört zur Gruppe %2, die für „%3“ vorgemerkt ist; damit wäre das Paket für „%4“ vorgemerkt.
Es ist aber selbst für „%5“ vorgemerkt.
Möchten Sie fortfahren?</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>Anwenden</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
    <message>
        <source>No</source>
        <translation>Nein</translation>
    </message>
    <message>
        <source>Internal error: group %1.%2 not evaluable</source>
        <translation>Interner Fehler: Gruppe %1.%2 ist nicht auswertbar</translation>
    </message>
    <message>
        <source>Transaction to be performed:
</source>
        <translation>Die Transaktion umfasst:
</translation>
    </message>
    <message>
        <source>Performing the following to resolve dependencies:
</source>
        <translation>Wegen der Abhängigkeiten außerdem:
</translation>
    </message>
    <message>
        <source>	Install (group): %1
</source>
        <translation>	Installieren (Gruppe): %1
</translation>
    </message>
    <message>
        <source>	Install (weak): %1
</source>
        <translation>	Installieren (schwach): %1
</translation>
    </message>
    <message>
        <source>	Install: %1
</source>
        <translation>	Installieren: %1
</translation>
    </message>
    <message>
        <source>	Downgrade: %1
</source>
        <translation>	Herabstufen: %1
</translation>
    </message>
    <message>
        <source>	Obsoleting: %1
</source>
        <translation>	Ersetzen: %1
</translation>
    </message>
    <message>
        <source>	Upgrade: %1
</source>
        <translation>	Aktualisieren: %1
</translation>
    </message>
    <message>
        <source>	Remove: %1
</source>
        <translation>	Entfernen: %1
</translation>
    </message>
    <message>
        <source>	Remove (unused): %1
</source>
        <translation>	Entfernen (unbenutzt): %1
</translation>
    </message>
    <message>
        <source>	Reinstall: %1
</source>
        <translation>	Erneut installieren: %1
</translation>
    </message>
    <message>
        <source>Cached size: %1
</source>
        <translation>Größe im Cache: %1
</translation>
    </message>
    <message>
        <source>Total download size: %1
</source>
        <translation>Gesamtgröße der Downloads: %1
</translation>
    </message>
    <message>
        <source>Installed size: %1
</source>
        <translation>Größe nach der Installation: %1
</translation>
    </message>
    <message>
        <source>No downloads; only removals
</source>
        <translation>Keine Downloads; es wird nur entfernt
</translation>
    </message>
    <message>
        <source>Query</source>
        <translation>Frage</translation>
    </message>
    <message>
        <source>Applying: OK</source>
        <translation>Anwenden: OK</translation>
    </message>
    <message>
        <source>Not Applying: Canceled</source>
        <translation>Nicht angewendet: abgebrochen</translation>
    </message>
    <message>
        <source>Running Transaction: Total Progress</source>
        <translation>Transaktion ausführen: Gesamtfortschritt</translation>
    </message>
    <message>
        <source>Preparing</source>
        <translation>Vorbereitung</translation>
    </message>
    <message>
        <source>Confirmation: Yes</source>
        <translation>Bestätigung: Ja</translation>
    </message>
    <message>
        <source>Confirmation: No</source>
        <translation>Bestätigung: Nein</translation>
    </message>
    <message>
        <source>Cleaning %1</source>
        <translation>Cache leeren: %1</translation>
    </message>
    <message>
        <source>Internal error: cannot clean %1</source>
        <translation>Interner Fehler: Der Cache kann nicht geleert werden: %1</translation>
    </message>
    <message>
        <source>dbcache</source>
        <translation>dbcache</translation>
    </message>
    <message>
        <source>Packages</source>
        <translation>Pakete</translation>
    </message>
    <message>
        <source>Metadata</source>
        <translation>Metadaten</translation>
    </message>
    <message>
        <source>All</source>
        <translation>Alles</translation>
    </message>
    <message>
        <source>Initialization</source>
        <translation>Initialisierung</translation>
    </message>
    <message>
        <source>Initializing: Total Progress</source>
        <translation>Initialisierung: Gesamtfortschritt</translation>
    </message>
    <message>
        <source>Unable to obtain yum lock</source>
        <translation>Die Sperre von yum ist nicht zu bekommen</translation>
    </message>
    <message>
        <source>Internal error: yumIO.base.repos not evaluable</source>
        <translation>Interner Fehler: yumIO.base.repos ist nicht auswertbar</translation>
    </message>
    <message>
        <source>Internal error: yumIO.base.repos not a dictionary</source>
        <translation>Interner Fehler: yumIO.base.repos ist kein Dictionary</translation>
    </message>
    <message>
        <source>contents</source>
        <translation>Inhalt</translation>
    </message>
    <message>
        <source>No repositories are configured.
Under the Repositories menu, Edit Configuration can be used to configure repositories.</source>
        <translation>Es sind keine Paketquellen eingerichtet.
Das geht im Menü „Paketquellen“ mit „Konfiguration bearbeiten“.</translation>
    </message>
    <message>
        <source>No repositories are enabled.
Under the Repositories menu, Edit Configuration can be used to configure repositories.</source>
        <translation>Es sind keine Paketquellen eingeschaltet.
Das geht im Menü „Paketquellen“ mit „Konfiguration bearbeiten“.</translation>
    </message>
    <message>
        <source>Reading repositories</source>
        <translation>Paketquellen lesen</translation>
    </message>
    <message>
        <source>Internal error: execution of yumIO.%1 failed</source>
        <translation>Interner Fehler: Die Ausführung von yumIO.%1 ist fehlgeschlagen</translation>
    </message>
    <message>
        <source>Collecting updatable packages</source>
        <translation>Aktualisierbare Pakete ermitteln</translation>
    </message>
    <message>
        <source>collect updatable packages</source>
        <translation>Aktualisierbare Pakete ermitteln</translation>
    </message>
    <message>
        <source>Collecting installed and available packages</source>
        <translation>Installierte und verfügbare Pakete ermitteln</translation>
    </message>
    <message>
        <source>collect installed and available packages</source>
        <translation>Installierte und verfügbare Pakete ermitteln</translation>
    </message>
    <message>
        <source>Collecting groups</source>
        <translation>Gruppen ermitteln</translation>
    </message>
    <message>
        <source>collect groups</source>
        <translation>Gruppen ermitteln</translation>
    </message>
    <message>
        <source>unable to setup repository %1:
%2</source>
        <translation>Die Paketquelle %1 kann nicht vorbereitet werden:
%2</translation>
    </message>
    <message>
        <source>Internal error: yumIO.collectAll.%1 not found</source>
        <translation>Interner Fehler: yumIO.collectAll.%1 ist nicht zu finden</translation>
    </message>
    <message>
        <source>Internal error: the packages are not iterable</source>
        <translation>Interner Fehler: Die Pakete sind nicht iterierbar</translation>
    </message>
    <message>
        <source>Internal error: the packages cannot be walked</source>
        <translation>Interner Fehler: Die Pakete können nicht durchlaufen werden</translation>
    </message>
    <message>
        <source>Internal error: yumIO.base.history not evaluable</source>
        <translation>Interner Fehler: yumIO.base.history ist nicht auswertbar</translation>
    </message>
    <message>
        <source>Internal error: yumIO.base.history.group not evaluable</source>
        <translation>Interner Fehler: yumIO.base.history.group ist nicht auswertbar</translation>
    </message>
    <message>
        <source>Internal error: the groups are not iterable</source>
        <translation>Interner Fehler: Die Gruppen sind nicht iterierbar</translation>
    </message>
    <message>
        <source>Internal error: group without name</source>
        <translation>Interner Fehler: Gruppe ohne Namen</translation>
    </message>
    <message>
        <source>Internal error: the groups cannot be walked</source>
        <translation>Interner Fehler: Die Gruppen können nicht durchlaufen werden</translation>
    </message>
    <message>
        <source>Collecting File Lists</source>
        <translation>Dateilisten lesen</translation>
    </message>
    <message>
        <source>file lists</source>
        <translation>Dateilisten</translation>
    </message>
    <message>
        <source>Loading file lists: Total Progress</source>
        <translation>Dateilisten laden: Gesamtfortschritt</translation>
    </message>
    <message>
        <source>collect filelists</source>
        <translation>Dateilisten lesen</translation>
    </message>
    <message>
        <source>Collecting Miscellaneous data</source>
        <translation>Weitere Daten lesen</translation>
    </message>
    <message>
        <source>miscellaneous data</source>
        <translation>weitere Daten</translation>
    </message>
    <message>
        <source>Loading miscellaneous data: Total Progress</source>
        <translation>Weitere Daten laden: Gesamtfortschritt</translation>
    </message>
    <message>
        <source>collect miscellaneous data</source>
        <translation>Weitere Daten lesen</translation>
    </message>
    <message>
        <source>Internal error: cannot find package&apos;s %1</source>
        <translation>Interner Fehler: %1 des Pakets ist nicht zu finden</translation>
    </message>
    <message>
        <source>getRpmHdrValue called for package with no hdr (i.e. not installed)</source>
        <translation>getRpmHdrValue wurde für ein Paket ohne hdr aufgerufen (also ein nicht installiertes)</translation>
    </message>
    <message>
        <source>Internal error: cannot find rpm.%1</source>
        <translation>Interner Fehler: rpm.%1 ist nicht zu finden</translation>
    </message>
    <message>
        <source>Internal error: conf not evaluable</source>
        <translation>Interner Fehler: conf ist nicht auswertbar</translation>
    </message>
    <message>
        <source>Internal error: yum var %1 not found</source>
        <translation>Interner Fehler: Die yum-Variable %1 ist nicht zu finden</translation>
    </message>
    <message>
        <source>Internal error: %1: unable to determine payload __str__</source>
        <translation>Interner Fehler: %1: __str__ der Nutzlast ist nicht zu ermitteln</translation>
    </message>
    <message>
        <source>Internal error: %1: unable to determine payload download_size</source>
        <translation>Interner Fehler: %1: download_size der Nutzlast ist nicht zu ermitteln</translation>
    </message>
    <message>
        <source>Internal error: downloadStart: unable to interpret arguments</source>
        <translation>Interner Fehler: downloadStart: Die Argumente sind nicht auszuwerten</translation>
    </message>
    <message>
        <source>Internal error: downloadStart: download at unexpected time</source>
        <translation>Interner Fehler: downloadStart: Download zu unerwarteter Zeit</translation>
    </message>
    <message>
        <source>Internal error: downloadProgress: unable to interpret arguments</source>
        <translation>Interner Fehler: downloadProgress: Die Argumente sind nicht auszuwerten</translation>
    </message>
    <message>
        <source>Internal error: downloadProgress: download at unexpected time</source>
        <translation>Interner Fehler: downloadProgress: Download zu unerwarteter Zeit</translation>
    </message>
    <message>
        <source>Internal error: downloadMessage: unable to interpret arguments</source>
        <translation>Interner Fehler: downloadMessage: Die Argumente sind nicht auszuwerten</translation>
    </message>
    <message>
        <source>Internal error: downloadMessage: download at unexpected time</source>
        <translation>Interner Fehler: downloadMessage: Download zu unerwarteter Zeit</translation>
    </message>
    <message>
        <source>Internal error: downloadEnd: unable to interpret arguments</source>
        <translation>Interner Fehler: downloadEnd: Die Argumente sind nicht auszuwerten</translation>
    </message>
    <message>
        <source>Internal error: downloadEnd: download at unexpected time</source>
        <translation>Interner Fehler: downloadEnd: Download zu unerwarteter Zeit</translation>
    </message>
    <message>
        <source>Internal error: downloadRemotePayloads: unable to determine payload pkg</source>
        <translation>Interner Fehler: downloadRemotePayloads: pkg der Nutzlast ist nicht zu ermitteln</translation>
    </message>
    <message>
        <source>Internal error: downloadRemotePayloads: unable to determine payload pkg.name</source>
        <translation>Interner Fehler: downloadRemotePayloads: pkg.name der Nutzlast ist nicht zu ermitteln</translation>
    </message>
    <message>
        <source>Internal error: downloadRemotePayloads: unable to determine payload pkg.arch</source>
        <translation>Interner Fehler: downloadRemotePayloads: pkg.arch der Nutzlast ist nicht zu ermitteln</translation>
    </message>
    <message>
        <source>Internal error: downloadRemotePayloads: unable to determine payload download_size</source>
        <translation>Interner Fehler: downloadRemotePayloads: download_size der Nutzlast ist nicht zu ermitteln</translation>
    </message>
    <message>
        <source>Downloading %1 packages</source>
        <translation>Pakete herunterladen: %1</translation>
    </message>
    <message>
        <source>Downloading %1</source>
        <translation>Herunterladen: %1</translation>
    </message>
    <message>
        <source>warning: YumIO::tsDownloadProgress saw payload with unexpected type: %1</source>
        <translation>Warnung: YumIO::tsDownloadProgress bekam eine Nutzlast unerwarteter Art: %1</translation>
    </message>
    <message>
        <source>error: YumIO::tsDownloadProgress: unexpected thread %1/%2</source>
        <translation>Fehler: YumIO::tsDownloadProgress: unerwarteter Thread %1/%2</translation>
    </message>
    <message>
        <source>Internal error: rpmtransInit: unable to interpret arguments</source>
        <translation>Interner Fehler: rpmtransInit: Die Argumente sind nicht auszuwerten</translation>
    </message>
    <message>
        <source>Preparing to Run Transaction</source>
        <translation>Transaktion vorbereiten</translation>
    </message>
    <message>
        <source>Internal error: rpmtransProgress: unable to interpret arguments</source>
        <translation>Interner Fehler: rpmtransProgress: Die Argumente sind nicht auszuwerten</translation>
    </message>
    <message>
        <source>Internal error: YumIO::rpmtransProgress action=%1 not understood; ignoring</source>
        <translation>Interner Fehler: YumIO::rpmtransProgress: action=%1 nicht verstanden; wird übergangen</translation>
    </message>
    <message>
        <source>Internal error: YumIO::rpmtransProgress interior action=%1 not understood</source>
        <translation>Interner Fehler: YumIO::rpmtransProgress: innere action=%1 nicht verstanden</translation>
    </message>
    <message>
        <source>Installing %1</source>
        <translation>Installieren: %1</translation>
    </message>
    <message>
        <source>Downgrading %1</source>
        <translation>Herabstufen: %1</translation>
    </message>
    <message>
        <source>Completing downgrade of %1</source>
        <translation>Herabstufen abschließen: %1</translation>
    </message>
    <message>
        <source>Obsoleting %1</source>
        <translation>Ersetzen: %1</translation>
    </message>
    <message>
        <source>Upgrading %1</source>
        <translation>Aktualisieren: %1</translation>
    </message>
    <message>
        <source>Completing upgrade of %1</source>
        <translation>Aktualisieren abschließen: %1</translation>
    </message>
    <message>
        <source>Removing %1</source>
        <translation>Entfernen: %1</translation>
    </message>
    <message>
        <source>Reinstalling %1</source>
        <translation>Erneut installieren: %1</translation>
    </message>
    <message>
        <source>Completing reinstall of %1</source>
        <translation>Erneutes Installieren abschließen: %1</translation>
    </message>
    <message>
        <source>Executing scriptlet for %1</source>
        <translation>Skriptlet ausführen: %1</translation>
    </message>
    <message>
        <source>Internal error: rpmtransScriptout: unable to interpret arguments</source>
        <translation>Interner Fehler: rpmtransScriptout: Die Argumente sind nicht auszuwerten</translation>
    </message>
    <message>
        <source>Reading repository metadata for %1</source>
        <translation>Metadaten der Paketquelle lesen: %1</translation>
    </message>
    <message>
        <source>Collecting Texts to Search</source>
        <translation>Texte für die Suche lesen</translation>
    </message>
    <message>
        <source>Reading package texts: Total Progress</source>
        <translation>Texte der Pakete lesen: Gesamtfortschritt</translation>
    </message>
    <message>
        <source>Reading packages</source>
        <translation>Pakete lesen</translation>
    </message>
    <message>
        <source>Unable to read %1: %2</source>
        <translation>%1 kann nicht gelesen werden: %2</translation>
    </message>
    <message>
        <source>Internal error: dnf version not found</source>
        <translation>Interner Fehler: Die Version von dnf ist nicht zu finden</translation>
    </message>
    <message>
        <source>VYRE Yum Error</source>
        <translation>VYRE – Fehler von yum</translation>
    </message>
    <message>
        <source>VYRE Yum Warning</source>
        <translation>VYRE – Warnung von yum</translation>
    </message>
    <message>
        <source>Unable to %1: I/O Error: %2

Emitting a walkback to the Log window.</source>
        <translation>Fehlgeschlagen: %1: Ein-/Ausgabefehler: %2

Die Aufrufliste steht im Protokoll.</translation>
    </message>
    <message>
        <source>Unable to %1: KeyboardInterrupt

This usually means VYRE was sent signal SIGINT, SIGTERM, or similar.

But urlgrabber also can raise this error for several situations where it is just guessing.
So, emitting a walkback to the Log window.</source>
        <translation>Fehlgeschlagen: %1: KeyboardInterrupt

Meist heißt das, dass VYRE ein Signal wie SIGINT oder SIGTERM bekommen hat.

urlgrabber löst diesen Fehler aber auch aus, wenn es den Grund nur vermutet.
Die Aufrufliste steht deshalb im Protokoll.</translation>
    </message>
    <message>
        <source>Internal error: python assertion failed
When reporting this issue, please include the contents of the
Log window, which should contain a walkback.</source>
        <translation>Interner Fehler: Eine Annahme in Python trifft nicht zu
Bitte fügen Sie einem Fehlerbericht den Inhalt des Protokolls bei,
in dem eine Aufrufliste stehen sollte.</translation>
    </message>
    <message>
        <source>Unable to %1: Runtime Error:

%2</source>
        <translation>Fehlgeschlagen: %1: Laufzeitfehler:

%2</translation>
    </message>
    <message>
        <source>Unable to %1: metadata unavailable from all repo mirrors:
%2</source>
        <translation>Fehlgeschlagen: %1: Kein Spiegel der Paketquelle liefert die Metadaten:
%2</translation>
    </message>
    <message>
        <source>Unable to %1: a repository&apos;s sqlite database was locked unexpectedly
On some distributions, PackageKit has been known to cause this.</source>
        <translation>Fehlgeschlagen: %1: Die sqlite-Datenbank einer Paketquelle war unerwartet gesperrt
Auf manchen Distributionen liegt das an PackageKit.</translation>
    </message>
    <message>
        <source>Unable to %1</source>
        <translation>Fehlgeschlagen: %1</translation>
    </message>
    <message>
        <source>Unable to disable SIGCHLD signal handler; errno=%1 (%2)</source>
        <translation>Die Behandlung des Signals SIGCHLD kann nicht abgeschaltet werden; errno=%1 (%2)</translation>
    </message>
    <message>
        <source>Unable to restore SIGCHLD signal handler; errno=%1 (%2)</source>
        <translation>Die Behandlung des Signals SIGCHLD kann nicht wiederhergestellt werden; errno=%1 (%2)</translation>
    </message>
    <message>
        <source>Unable to reap children; errno=%1 (%2)</source>
        <translation>Beendete Kindprozesse können nicht abgeholt werden; errno=%1 (%2)</translation>
    </message>
    <message>
        <source>Reaped zombie child %1</source>
        <translation>Beendeter Kindprozess %1 abgeholt</translation>
    </message>
    <message>
        <source>VYRE cannot check signatures, because the rpmkeys program is missing.</source>
        <translation>VYRE kann keine Signaturen prüfen, weil das Programm rpmkeys fehlt.</translation>
    </message>
    <message>
        <source>Import the signing key 0x{}?

Metadata of:	{}
User id:	{}
Fingerprint:	{}
From:	{}
</source>
        <translation>Den Signaturschlüssel 0x{} importieren?

Metadaten von:	{}
Benutzer:	{}
Fingerabdruck:	{}
Von:	{}
</translation>
    </message>
    <message>
        <source>Import the signing key 0x{}?

Package:	{}
Repository:	{}
User id:	{}
Fingerprint:	{}
From:	{}
</source>
        <translation>Den Signaturschlüssel 0x{} importieren?

Paket:	{}
Paketquelle:	{}
Benutzer:	{}
Fingerabdruck:	{}
Von:	{}
</translation>
    </message>
    <message>
        <source>
Only {} kB are free in {}</source>
        <translation>
Nur noch {} kB sind frei in {}</translation>
    </message>
    <message>
        <source>The change logs of %s cannot be read: %s</source>
        <translation>Die Änderungsprotokolle von %s können nicht gelesen werden: %s</translation>
    </message>
    <message>
        <source>Unable to use the configuration file %s: %s</source>
        <translation>Die Konfigurationsdatei %s kann nicht verwendet werden: %s</translation>
    </message>
    <message>
        <source>it is not a regular file</source>
        <translation>sie ist keine gewöhnliche Datei</translation>
    </message>
    <message>
        <source>it is larger than {} MB</source>
        <translation>sie ist größer als {} MB</translation>
    </message>
    <message>
        <source>The main configuration file is missing. VYRE checks package signatures, unless a repository disables this check.</source>
        <translation>Die Hauptkonfigurationsdatei fehlt. VYRE prüft die Signaturen der Pakete, sofern nicht eine Paketquelle diese Prüfung ausschaltet.</translation>
    </message>
    <message>
        <source>VYRE ignores the options in this file, such as exclude. VYRE checks package signatures, unless a repository disables this check.</source>
        <translation>VYRE beachtet die Optionen in dieser Datei nicht, etwa exclude. VYRE prüft die Signaturen der Pakete, sofern nicht eine Paketquelle diese Prüfung ausschaltet.</translation>
    </message>
    <message>
        <source>Waiting for {}, which uses the cache of the package manager</source>
        <translation>Warten auf {}, das den Zwischenspeicher der Paketverwaltung benutzt</translation>
    </message>
    <message>
        <source>VYRE no longer waits for {}. Nothing was changed.</source>
        <translation>VYRE wartet nicht mehr auf {}. Es wurde nichts verändert.</translation>
    </message>
    <message>
        <source>VYRE no longer waits for {}.</source>
        <translation>VYRE wartet nicht mehr auf {}.</translation>
    </message>
    <message>
        <source>{}
No packages were changed, but dnf had already saved these changes:
{}</source>
        <translation>{}
Es wurden keine Pakete verändert, aber dnf hatte schon diese Änderungen gespeichert:
{}</translation>
    </message>
    <message>
        <source>These marked packages belong to streams that are not enabled: {}</source>
        <translation>Diese vorgemerkten Pakete gehören zu Streams, die nicht eingeschaltet sind: {}</translation>
    </message>
    <message>
        <source>another program</source>
        <translation>ein anderes Programm</translation>
    </message>
    <message>
        <source>process {}</source>
        <translation>Prozess {}</translation>
    </message>
    <message>
        <source>dnf&apos;s file %s requires checks that %s does not require. VYRE makes these checks too: %s</source>
        <translation>Die Datei %s von dnf verlangt Prüfungen, die %s nicht verlangt. VYRE nimmt auch diese Prüfungen vor: %s</translation>
    </message>
    <message>
        <source>The main configuration file is missing. dnf uses %s instead. VYRE also makes the checks that this file requires: %s</source>
        <translation>Die Hauptkonfigurationsdatei fehlt. dnf verwendet stattdessen %s. VYRE nimmt auch die Prüfungen vor, die diese Datei verlangt: %s</translation>
    </message>
    <message>
        <source>VYRE cannot write log files in %s: %s</source>
        <translation>VYRE kann in %s keine Protokolldateien schreiben: %s</translation>
    </message>
    <message>
        <source>Unable to read the repository configuration: %s</source>
        <translation>Die Konfiguration der Paketquellen kann nicht gelesen werden: %s</translation>
    </message>
    <message>
        <source>There is nothing to do.</source>
        <translation>Es gibt nichts zu tun.</translation>
    </message>
    <message>
        <source>{} is not newer than the installed version.</source>
        <translation>{} ist nicht neuer als die installierte Version.</translation>
    </message>
    <message>
        <source>The transaction failed for:</source>
        <translation>Die Transaktion ist fehlgeschlagen für:</translation>
    </message>
    <message>
        <source>The package database does not record these changes:</source>
        <translation>Die Paketdatenbank enthält diese Änderungen nicht:</translation>
    </message>
    <message>
        <source>The repository {} does not exist</source>
        <translation>Die Paketquelle {} existiert nicht</translation>
    </message>
    <message>
        <source>An interrupted transaction has left several installed versions of these packages:
{}
&quot;dnf remove --duplicates&quot; removes the older versions.</source>
        <translation>Eine abgebrochene Transaktion hat mehrere installierte Versionen dieser Pakete hinterlassen:
{}
„dnf remove --duplicates“ entfernt die älteren Versionen.</translation>
    </message>
    <message>
        <source>Waiting for {}, which uses the package database</source>
        <translation>Warten auf {}, das die Paketdatenbank benutzt</translation>
    </message>
    <message>
        <source>Waiting for another program, which uses the package database</source>
        <translation>Warten auf ein anderes Programm, das die Paketdatenbank benutzt</translation>
    </message>
    <message>
        <source>Another program is using the package database: {}
Keep waiting?
</source>
        <translation>Ein anderes Programm benutzt gerade die Paketdatenbank: {}
Weiter warten?
</translation>
    </message>
    <message>
        <source>Another program is using the package database.
Keep waiting?
</source>
        <translation>Ein anderes Programm benutzt gerade die Paketdatenbank.
Weiter warten?
</translation>
    </message>
    <message>
        <source>Another program is using the package database. Nothing was changed.</source>
        <translation>Ein anderes Programm benutzt die Paketdatenbank. Es wurde nichts geändert.</translation>
    </message>
    <message>
        <source>Another program has changed the system since VYRE read the packages. Nothing was applied.
VYRE now reads the packages again, and keeps the marks that are still possible.</source>
        <translation>Ein anderes Programm hat das System geändert, seit VYRE die Pakete gelesen hat. Es wurde nichts angewendet.
VYRE liest die Pakete jetzt neu und behält die Vormerkungen, die noch möglich sind.</translation>
    </message>
    <message>
        <source>another package</source>
        <translation>ein anderes Paket</translation>
    </message>
    <message>
        <source>The packages were changed, but VYRE could not write the transaction history:
{}</source>
        <translation>Die Pakete wurden geändert, aber VYRE konnte die Liste der früheren Transaktionen nicht schreiben:
{}</translation>
    </message>
    <message>
        <source>The disk was full, so the scripts of these packages may not have run:
{}</source>
        <translation>Die Festplatte war voll. Deshalb sind die Skripte dieser Pakete vielleicht nicht gelaufen:
{}</translation>
    </message>
    <message>
        <source>The disk has too little space for package scripts. They may not run.{}
Apply anyway?
</source>
        <translation>Auf der Festplatte ist zu wenig Platz für die Skripte der Pakete. Vielleicht laufen sie nicht.{}
Trotzdem anwenden?
</translation>
    </message>
    <message>
        <source>The disk has too little space for package scripts. Nothing was changed.</source>
        <translation>Auf der Festplatte ist zu wenig Platz für die Skripte der Pakete. Es wurde nichts geändert.</translation>
    </message>
    <message>
        <source>The history does not record the end of the last transaction, begun on {}.
All its packages are in the intended state.</source>
        <translation>In der Liste der früheren Transaktionen fehlt das Ende der letzten, begonnen am {}.
Alle ihre Pakete sind so, wie sie sein sollen.</translation>
    </message>
    <message>
        <source>The {} metadata of the repository {} are damaged: {}</source>
        <translation>Die Metadaten „{}“ der Paketquelle {} sind beschädigt: {}</translation>
    </message>
    <message>
        <source>The {} metadata of the repository {} are damaged: {}
Searches and descriptions lack some file lists or change logs of its packages.</source>
        <translation>Die Metadaten „{}“ der Paketquelle {} sind beschädigt: {}
Bei der Suche und in Beschreibungen fehlen manche Dateilisten oder Änderungsprotokolle ihrer Pakete.</translation>
    </message>
    <message>
        <source>The group metadata of the repository {} are damaged: {}
VYRE does not list the groups of this repository.</source>
        <translation>Die Metadaten der Gruppen der Paketquelle {} sind beschädigt: {}
VYRE zeigt die Gruppen dieser Paketquelle nicht.</translation>
    </message>
    <message>
        <source>Process {} has ended without removing its lock file {}. VYRE removes this file.</source>
        <translation>Der Prozess {} ist zu Ende und hat seine Sperrdatei {} nicht entfernt. VYRE entfernt diese Datei.</translation>
    </message>
    <message>
        <source>The file {} is damaged: {}</source>
        <translation>Die Datei {} ist beschädigt: {}</translation>
    </message>
    <message>
        <source>The transaction history is damaged: {}
Move the file to another place. The package manager then creates a new file.</source>
        <translation>Die Liste der früheren Transaktionen ist beschädigt: {}
Verschieben Sie die Datei an einen anderen Ort. Die Paketverwaltung legt dann eine neue an.</translation>
    </message>
    <message>
        <source>VYRE does not know which groups are installed, because it cannot read the transaction history.
%1
If the file is damaged, move it to another place. The package manager then creates a new file.</source>
        <translation>VYRE weiß nicht, welche Gruppen installiert sind, weil es die Liste der früheren Transaktionen nicht lesen kann.
%1
Wenn die Datei beschädigt ist, verschieben Sie sie an einen anderen Ort. Die Paketverwaltung legt dann eine neue an.</translation>
    </message>
    <message>
        <source>The plug-in {} cannot be loaded: {}</source>
        <translation>Die Erweiterung {} kann nicht geladen werden: {}</translation>
    </message>
    <message>
        <source>The plug-ins cannot be loaded: {}</source>
        <translation>Die Erweiterungen können nicht geladen werden: {}</translation>
    </message>
    <message>
        <source>The plug-in {} has ended the operation: {}</source>
        <translation>Die Erweiterung {} hat den Vorgang beendet: {}</translation>
    </message>
    <message>
        <source>The plug-in %s has failed (%s):</source>
        <translation>Die Erweiterung %s ist gescheitert (%s):</translation>
    </message>
    <message>
        <source>The plug-in %s needs the dnf command and does not work in VYRE (%s).</source>
        <translation>Die Erweiterung %s braucht den Befehl dnf und wirkt in VYRE nicht (%s).</translation>
    </message>
    <message>
        <source>The packages were changed.
{}</source>
        <translation>Die Pakete wurden geändert.
{}</translation>
    </message>
    <message>
        <source>VYRE cannot read groups of packages on this system, because the installed libcomps does not work with the installed version of Python. VYRE lists no groups. Everything else works.</source>
        <translation>VYRE kann auf diesem System keine Gruppen von Paketen lesen, weil die installierte libcomps mit der installierten Version von Python nicht zusammenarbeitet. VYRE zeigt keine Gruppen. Alles andere funktioniert.</translation>
    </message>
    <message>
        <source>The transaction was only tested, because the tsflags option contains test. Nothing was changed.</source>
        <translation>Die Transaktion wurde nur geprüft, weil die Option tsflags test enthält. Nichts wurde geändert.</translation>
    </message>
    <message>
        <source>VYRE does not support version {} of dnf. It cannot read the configuration, because dnf lacks {}.</source>
        <translation>VYRE unterstützt Version {} von dnf nicht. Es kann die Konfiguration nicht lesen, weil dnf {} fehlt.</translation>
    </message>
    <message>
        <source>VYRE does not support version {} of dnf. It cannot read repositories and packages, because dnf lacks {}.</source>
        <translation>VYRE unterstützt Version {} von dnf nicht. Es kann keine Paketquellen und Pakete lesen, weil dnf {} fehlt.</translation>
    </message>
    <message>
        <source>VYRE does not support version {} of dnf. It cannot use plug-ins, because dnf lacks {}.</source>
        <translation>VYRE unterstützt Version {} von dnf nicht. Es kann keine Erweiterungen verwenden, weil dnf {} fehlt.</translation>
    </message>
    <message>
        <source>VYRE does not support version {} of dnf. It cannot carry out transactions, because dnf lacks {}.</source>
        <translation>VYRE unterstützt Version {} von dnf nicht. Es kann keine Transaktionen ausführen, weil dnf {} fehlt.</translation>
    </message>
    <message>
        <source>The programs of this system are in a read-only image. VYRE cannot change the image. Nothing was changed.</source>
        <translation>Die Programme dieses Systems sind in einem schreibgeschützten Abbild. VYRE kann das Abbild nicht ändern. Nichts wurde geändert.</translation>
    </message>
    <message>
        <source>Finding the marks that can be applied</source>
        <translation>Die ausführbaren Vormerkungen werden ermittelt</translation>
    </message>
    <message>
        <source>The marks cannot be applied:
{}
Nothing was changed. VYRE keeps all marks.</source>
        <translation>Die Vormerkungen können nicht ausgeführt werden:
{}
Nichts wurde geändert. VYRE behält alle Vormerkungen.</translation>
    </message>
    <message>
        <source>Go on without these packages?

&quot;Yes&quot; goes on with the remaining marks: {}.
VYRE keeps the marks that cannot be applied.
&quot;No&quot; changes nothing. VYRE keeps all marks.

{}
</source>
        <translation>Ohne diese Pakete fortfahren?

„Yes“ fährt mit den übrigen Vormerkungen fort: {}.
VYRE behält die nicht ausführbaren Vormerkungen.
„No“ ändert nichts. VYRE behält alle Vormerkungen.

{}
</translation>
    </message>
    <message>
        <source>{} and {} more</source>
        <translation>{} und {} weitere</translation>
    </message>
    <message>
        <source>This is only a test, because the tsflags option contains test. dnf downloads and checks the packages;
it installs, updates and removes nothing.

</source>
        <translation>Dies ist nur eine Prüfung, weil die Option tsflags test enthält. dnf lädt die Pakete herunter und prüft sie;
es installiert, aktualisiert und entfernt nichts.

</translation>
    </message>
    <message>
        <source>You can remove the downloaded packages with Clean Packages in the Cache menu.</source>
        <translation>Sie können die heruntergeladenen Pakete mit Pakete löschen im Menü Cache entfernen.</translation>
    </message>
    <message>
        <source>These packages are not in the transaction. VYRE keeps their marks:
%1</source>
        <translation>Diese Pakete sind nicht in der Transaktion. VYRE behält ihre Vormerkungen:
%1</translation>
    </message>
    <message>
        <source>Other packages replace these installed packages. Mark the replacements for installation, or keep the installed packages:
%1</source>
        <translation>Andere Pakete ersetzen diese installierten Pakete. Merken Sie die Ersatzpakete zur Installation vor, oder behalten Sie die installierten Pakete:
%1</translation>
    </message>
    <message>
        <source>You are not allowed to change the list of locks {}</source>
        <translation>Sie dürfen die Liste der gesperrten Pakete nicht ändern: {}</translation>
    </message>
    <message>
        <source>These packages are still locked: {}
VYRE keeps these lines of {}, because they lock other packages too:
{}</source>
        <translation>Diese Pakete sind noch gesperrt: {}
VYRE behält diese Zeilen von {}, weil sie auch andere Pakete sperren:
{}</translation>
    </message>
    <message>
        <source>The versionlock plug-in is not loaded.</source>
        <translation>Die Erweiterung versionlock ist nicht geladen.</translation>
    </message>
    <message>
        <source>Locking Versions</source>
        <translation>Versionen sperren</translation>
    </message>
    <message>
        <source>Unlocking Versions</source>
        <translation>Versionen freigeben</translation>
    </message>
    <message>
        <source>lock versions</source>
        <translation>Versionen sperren</translation>
    </message>
    <message>
        <source>unlock versions</source>
        <translation>Versionen freigeben</translation>
    </message>
    <message>
        <source>Internal error: the version locks cannot be changed</source>
        <translation>Interner Fehler: Die gesperrten Versionen können nicht geändert werden</translation>
    </message>
    <message>
        <source>All repositories are disabled for this session.</source>
        <translation>In dieser Sitzung sind alle Paketquellen ausgeschaltet.</translation>
    </message>
    <message>
        <source>The repository %1 cannot be read:
%2

Go on without it for this session?</source>
        <translation>Die Paketquelle %1 kann nicht gelesen werden:
%2

In dieser Sitzung ohne sie weitermachen?</translation>
    </message>
    <message>
        <source>Repositories</source>
        <translation>Paketquellen</translation>
    </message>
    <message>
        <source>Yes to &amp;All</source>
        <translation>Ja zu &amp;allen</translation>
    </message>
    <message>
        <source>VYRE does not use the repository %1 in this session:
%2</source>
        <translation>VYRE benutzt die Paketquelle %1 in dieser Sitzung nicht:
%2</translation>
    </message>
    <message>
        <source>Stopped.</source>
        <translation>Angehalten.</translation>
    </message>
    <message>
        <source>Reading the installed packages</source>
        <translation>Installierte Pakete werden gelesen</translation>
    </message>
    <message>
        <source>Reading repository metadata for {}</source>
        <translation>Metadaten der Paketquelle {} werden gelesen</translation>
    </message>
    <message>
        <source>Reading the packages of {}</source>
        <translation>Pakete der Paketquelle {} werden gelesen</translation>
    </message>
    <message>
        <source>Checking the metadata of {}</source>
        <translation>Metadaten der Paketquelle {} werden geprüft</translation>
    </message>
    <message>
        <source>These repositories have no usable metadata in the cache, and are left out until the next Refresh: {}.</source>
        <translation>Diese Paketquellen haben keine brauchbaren Metadaten im Cache und fehlen bis zum nächsten „Neu laden“: {}.</translation>
    </message>
    <message>
        <source>Reading Advisories</source>
        <translation>Aktualisierungshinweise lesen</translation>
    </message>
    <message>
        <source>read the advisories</source>
        <translation>Aktualisierungshinweise lesen</translation>
    </message>
    <message>
        <source>Internal error: the advisories cannot be read</source>
        <translation>Interner Fehler: Die Aktualisierungshinweise können nicht gelesen werden</translation>
    </message>
    <message>
        <source>Removals: %1. You did not mark %2 of them:</source>
        <translation>Zu entfernende Pakete: %1. Davon nicht vorgemerkt: %2:</translation>
    </message>
    <message>
        <source>Install: %1</source>
        <translation>Installieren: %1</translation>
    </message>
    <message>
        <source>Upgrade: %1</source>
        <translation>Aktualisieren: %1</translation>
    </message>
    <message>
        <source>Downgrade: %1</source>
        <translation>Herabstufen: %1</translation>
    </message>
    <message>
        <source>Reinstall: %1</source>
        <translation>Erneut installieren: %1</translation>
    </message>
    <message>
        <source>Remove: %1</source>
        <translation>Entfernen: %1</translation>
    </message>
    <message>
        <source>VYRE does not support version {} of dnf. It cannot undo transactions, because dnf lacks {}.</source>
        <translation>VYRE unterstützt Version {} von dnf nicht. Es kann keine Transaktionen rückgängig machen, weil dnf {} fehlt.</translation>
    </message>
    <message>
        <source>The transaction is impossible:
{}
Nothing was changed. VYRE keeps all marks.</source>
        <translation>Die Transaktion ist unmöglich:
{}
Nichts wurde geändert. VYRE behält alle Vormerkungen.</translation>
    </message>
    <message>
        <source>These changes are impossible:
{}

Go on without them?
&quot;Yes&quot; shows the other changes. &quot;No&quot; changes nothing.
</source>
        <translation>Diese Änderungen sind unmöglich:
{}

Ohne sie fortfahren?
„Yes“ zeigt die anderen Änderungen. „No“ ändert nichts.
</translation>
    </message>
    <message>
        <source>This transaction was interrupted. All its packages are in the intended state.</source>
        <translation>Diese Transaktion wurde unterbrochen. Alle ihre Pakete sind im vorgesehenen Zustand.</translation>
    </message>
    <message>
        <source>This transaction was interrupted. &quot;Redo&quot; completes it with these changes:
{}</source>
        <translation>Diese Transaktion wurde unterbrochen. „Wiederholen“ vollendet sie mit diesen Änderungen:
{}</translation>
    </message>
    <message>
        <source>Packages were changed without dnf between the previous transaction and this transaction.</source>
        <translation>Zwischen der vorigen Transaktion und dieser wurden Pakete ohne dnf geändert.</translation>
    </message>
    <message>
        <source>Packages were changed without dnf between this transaction and the next transaction.</source>
        <translation>Zwischen dieser Transaktion und der nächsten wurden Pakete ohne dnf geändert.</translation>
    </message>
    <message>
        <source>(failed)</source>
        <translation>(fehlgeschlagen)</translation>
    </message>
    <message>
        <source>read the history</source>
        <translation>Verlauf lesen</translation>
    </message>
    <message>
        <source>Internal error: the history cannot be read</source>
        <translation>Interner Fehler: Der Verlauf kann nicht gelesen werden</translation>
    </message>
    <message>
        <source>Only root can undo or repeat transactions.</source>
        <translation>Nur root kann Transaktionen rückgängig machen oder wiederholen.</translation>
    </message>
    <message>
        <source>Undoing transaction %1</source>
        <translation>Transaktion %1 wird rückgängig gemacht</translation>
    </message>
    <message>
        <source>Undoing all transactions after %1</source>
        <translation>Alle Transaktionen nach %1 werden rückgängig gemacht</translation>
    </message>
    <message>
        <source>Repeating transaction %1</source>
        <translation>Transaktion %1 wird wiederholt</translation>
    </message>
    <message>
        <source>The group {} has no packages that can be installed; it is only recorded as installed.</source>
        <translation>Die Gruppe {} hat keine Pakete, die installiert werden können; sie wird nur als installiert vermerkt.</translation>
    </message>
    <message>
        <source>The group {} has no further packages that can be installed; it is only recorded as installed.</source>
        <translation>Die Gruppe {} hat keine weiteren Pakete, die installiert werden können; sie wird nur als installiert vermerkt.</translation>
    </message>
    <message>
        <source>The group {} has no packages that can be removed; only its record is removed.</source>
        <translation>Die Gruppe {} hat keine Pakete, die entfernt werden können; nur ihr Vermerk wird entfernt.</translation>
    </message>
    <message>
        <source>Removals: %1.</source>
        <translation>Zu entfernende Pakete: %1.</translation>
    </message>
    <message>
        <source>The scriptlet of {} failed.</source>
        <translation>Das Skript von {} ist fehlgeschlagen.</translation>
    </message>
    <message>
        <source>Carried out: %1.</source>
        <translation>Ausgeführt: %1.</translation>
    </message>
    <message>
        <source>Comparing Packages with the Expression</source>
        <translation>Pakete mit dem Ausdruck vergleichen</translation>
    </message>
    <message>
        <source>Comparing with the expression: Total Progress</source>
        <translation>Mit dem Ausdruck vergleichen: Gesamtfortschritt</translation>
    </message>
    <message>
        <source>Comparing packages</source>
        <translation>Pakete vergleichen</translation>
    </message>
    <message>
        <source>Locked by %1</source>
        <translation>Gesperrt durch %1</translation>
    </message>
    <message>
        <source>{}: the version of {} is locked by {}</source>
        <translation>{}: Die Version von {} ist gesperrt durch {}</translation>
    </message>
    <message>
        <source>{}: the configuration or a plug-in excludes this version</source>
        <translation>{}: Die Konfiguration oder ein Plug-in schließt diese Version aus</translation>
    </message>
    <message>
        <source>The group {} is not installed: only its installed packages are updated. To install the whole group, mark it for Install after this transaction.</source>
        <translation>Die Gruppe {} ist nicht installiert: nur ihre installierten Pakete werden aktualisiert. Um die ganze Gruppe zu installieren, merken Sie sie nach dieser Transaktion zum Installieren vor.</translation>
    </message>
    <message>
        <source>This undoes transaction {}.</source>
        <translation>Dies macht die Transaktion {} rückgängig.</translation>
    </message>
    <message>
        <source>This undoes all transactions after transaction {}.</source>
        <translation>Dies macht alle Transaktionen nach der Transaktion {} rückgängig.</translation>
    </message>
    <message>
        <source>This repeats transaction {}.</source>
        <translation>Dies wiederholt die Transaktion {}.</translation>
    </message>
    <message>
        <source>Obsoleting: %1</source>
        <translation>Ersetzen: %1</translation>
    </message>
    <message>
        <source>The last transaction, begun on {}, was interrupted.
In the History window (Ctrl+H), &quot;Redo&quot; completes it.</source>
        <translation>Die letzte Transaktion, begonnen am {}, wurde unterbrochen.
Im Fenster „Verlauf“ (Strg+H) vollendet „Wiederholen“ sie.</translation>
    </message>
    <message>
        <source>This completes transaction {}.</source>
        <translation>Dies vollendet die Transaktion {}.</translation>
    </message>
    <message>
        <source>VYRE cannot change packages, because it has no right to change {}</source>
        <translation>VYRE kann keine Pakete ändern, weil es {} nicht ändern darf</translation>
    </message>
    <message>
        <source>VYRE cannot change packages, because the programs of this system are in a read-only image</source>
        <translation>VYRE kann keine Pakete ändern, weil die Programme dieses Systems in einem schreibgeschützten Abbild sind</translation>
    </message>
    <message>
        <source>VYRE cannot change packages while the file system of {} is read-only</source>
        <translation>VYRE kann keine Pakete ändern, solange das Dateisystem von {} schreibgeschützt ist</translation>
    </message>
    <message>
        <source>VYRE cannot change files below {} while their file system is read-only</source>
        <translation>VYRE kann unter {} keine Dateien ändern, solange ihr Dateisystem schreibgeschützt ist</translation>
    </message>
    <message>
        <source>The programs of this system are in an image: the next start of the system may discard changes to packages</source>
        <translation>Die Programme dieses Systems sind in einem Abbild: Der nächste Start des Systems verwirft Änderungen an Paketen vielleicht</translation>
    </message>
    <message>
        <source>(result not recorded)</source>
        <translation>(Ergebnis nicht aufgezeichnet)</translation>
    </message>
    <message>
        <source>Reading the recorded transactions</source>
        <translation>Die aufgezeichneten Transaktionen werden gelesen</translation>
    </message>
    <message>
        <source>Finding the packages of the recorded transactions</source>
        <translation>Die Pakete der aufgezeichneten Transaktionen werden ermittelt</translation>
    </message>
    <message>
        <source>Install</source>
        <translation>Installieren</translation>
    </message>
    <message>
        <source>Upgrade</source>
        <translation>Aktualisieren</translation>
    </message>
    <message>
        <source>Downgrade</source>
        <translation>Herabstufen</translation>
    </message>
    <message>
        <source>Reinstall</source>
        <translation>Erneut installieren</translation>
    </message>
    <message>
        <source>Removed</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>Obsoleted</source>
        <translation>Ersetzen</translation>
    </message>
    <message>
        <source>Reason Change</source>
        <translation>Grund ändern</translation>
    </message>
    <message>
        <source>Upgraded</source>
        <translation>Aktualisiert</translation>
    </message>
    <message>
        <source>Downgraded</source>
        <translation>Herabgestuft</translation>
    </message>
    <message>
        <source>Reinstalled</source>
        <translation>Erneut installiert</translation>
    </message>
    <message>
        <source>Obsoleting</source>
        <translation>Ersatz</translation>
    </message>
</context>
<context>
    <name>YumIOCapturers</name>
    <message>
        <source>Unable to open pipe to capture rpm transaction output</source>
        <translation>Die Pipe für die Ausgaben der rpm-Transaktion kann nicht geöffnet werden</translation>
    </message>
    <message>
        <source>Unable to dup2 pipe to capture rpm transaction output</source>
        <translation>dup2 der Pipe für die Ausgaben der rpm-Transaktion ist fehlgeschlagen</translation>
    </message>
    <message>
        <source>Unable to dup2 to restore stderr</source>
        <translation>dup2 zum Wiederherstellen von stderr ist fehlgeschlagen</translation>
    </message>
</context>
</TS>
