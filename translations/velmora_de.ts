<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>TText</name>
    <message>
        <source>(was %1?)</source>
        <translation>(war %1?)</translation>
    </message>
    <message>
        <source>(now %1?)</source>
        <translation>(jetzt %1?)</translation>
    </message>
    <message>
        <source>on %1</source>
        <comment>of a trigger</comment>
        <translation>auf %1</translation>
    </message>
    <message numerus="yes">
        <source>%n unsafe action(s)</source>
        <translation>
            <numerusform>%n unsichere Aktion</numerusform>
            <numerusform>%n unsichere Aktionen</numerusform>
        </translation>
    </message>
    <message>
        <source>Meanwhile: %1</source>
        <translation>Währenddessen: %1</translation>
    </message>
    <message>
        <source>unsafe: %1</source>
        <translation>unsicher: %1</translation>
    </message>
    <message>
        <source>&lt;p&gt;Words of a name, a kind, of what changes; &lt;i&gt;new, changed, obsolete, unsafe&lt;/i&gt;. All have to fit.&lt;/p&gt;&lt;p&gt;Or patterns, one of which has to fit: &lt;i&gt;orders*&lt;/i&gt; for tables, &lt;i&gt;view:*&lt;/i&gt;, &lt;i&gt;trigger:t_*&lt;/i&gt;, &lt;i&gt;column:orders.ship_*&lt;/i&gt;, &lt;i&gt;index:*.ix_?&lt;/i&gt;.&lt;/p&gt;&lt;p&gt;What is hidden stays ticked, and is counted below the list.&lt;/p&gt;</source>
        <translation>&lt;p&gt;Wörter aus einem Namen, einer Art oder dem, was sich ändert; &lt;i&gt;new, changed, obsolete, unsafe&lt;/i&gt; für Neues, Geändertes, Überzähliges und Unsicheres. Alle müssen passen.&lt;/p&gt;&lt;p&gt;Oder Muster, von denen eines passen muss: &lt;i&gt;orders*&lt;/i&gt; für Tabellen, &lt;i&gt;view:*&lt;/i&gt;, &lt;i&gt;trigger:t_*&lt;/i&gt;, &lt;i&gt;column:orders.ship_*&lt;/i&gt;, &lt;i&gt;index:*.ix_?&lt;/i&gt;.&lt;/p&gt;&lt;p&gt;Was ausgeblendet ist, bleibt angehakt und wird unter der Liste gezählt.&lt;/p&gt;</translation>
    </message>
    <message>
        <source>How the actions are grouped</source>
        <translation>Wie die Aktionen gruppiert sind</translation>
    </message>
    <message>
        <source>By table</source>
        <translation>Nach Tabelle</translation>
    </message>
    <message>
        <source>By kind</source>
        <translation>Nach Art</translation>
    </message>
    <message>
        <source>How the actions are sorted</source>
        <translation>Wie die Aktionen sortiert sind</translation>
    </message>
    <message>
        <source>By name</source>
        <translation>Nach Name</translation>
    </message>
    <message>
        <source>By order of running</source>
        <translation>In der Folge der Ausführung</translation>
    </message>
    <message>
        <source>Filter (Ctrl+Shift+F)</source>
        <translation>Filter (Strg+Umschalt+F)</translation>
    </message>
    <message>
        <source>Filter of the sync actions</source>
        <translation>Filter der Aktionen</translation>
    </message>
    <message numerus="yes">
        <source>%n equal line(s)</source>
        <translation>
            <numerusform>%n gleiche Zeile</numerusform>
            <numerusform>%n gleiche Zeilen</numerusform>
        </translation>
    </message>
    <message>
        <source>Changed.</source>
        <translation>Geändert.</translation>
    </message>
    <message numerus="yes">
        <source>%n line(s) changed</source>
        <translation>
            <numerusform>%n Zeile geändert</numerusform>
            <numerusform>%n Zeilen geändert</numerusform>
        </translation>
    </message>
    <message>
        <source>Only in the reference.</source>
        <translation>Nur in der Referenz.</translation>
    </message>
    <message numerus="yes">
        <source>%n line(s) only in the reference</source>
        <translation>
            <numerusform>%n Zeile nur in der Referenz</numerusform>
            <numerusform>%n Zeilen nur in der Referenz</numerusform>
        </translation>
    </message>
    <message>
        <source>Only in the target.</source>
        <translation>Nur im Ziel.</translation>
    </message>
    <message numerus="yes">
        <source>%n line(s) only in the target</source>
        <translation>
            <numerusform>%n Zeile nur im Ziel</numerusform>
            <numerusform>%n Zeilen nur im Ziel</numerusform>
        </translation>
    </message>
    <message>
        <source>Only &amp;differences</source>
        <translation>Nur &amp;Unterschiede</translation>
    </message>
    <message>
        <source>Creation text of the reference</source>
        <translation>Erstellungstext der Referenz</translation>
    </message>
    <message>
        <source>Creation text of the target</source>
        <translation>Erstellungstext des Ziels</translation>
    </message>
    <message>
        <source>Both texts, up and down</source>
        <translation>Beide Texte, auf und ab</translation>
    </message>
    <message>
        <source>Both texts, left and right</source>
        <translation>Beide Texte, nach links und rechts</translation>
    </message>
    <message>
        <source>Previous place that differs (Shift+F7)</source>
        <translation>Vorige abweichende Stelle (Umschalt+F7)</translation>
    </message>
    <message>
        <source>Next place that differs (F7)</source>
        <translation>Nächste abweichende Stelle (F7)</translation>
    </message>
    <message>
        <source>Fold the lines that are equal</source>
        <translation>Gleiche Zeilen einklappen</translation>
    </message>
    <message numerus="yes">
        <source>%n place(s)</source>
        <translation>
            <numerusform>%n Stelle</numerusform>
            <numerusform>%n Stellen</numerusform>
        </translation>
    </message>
    <message>
        <source>Nothing differs.</source>
        <translation>Nichts weicht ab.</translation>
    </message>
    <message>
        <source>Place %1 of %2</source>
        <translation>Stelle %1 von %2</translation>
    </message>
    <message numerus="yes">
        <source>%n equal line(s) folded: click to show what is here.</source>
        <translation>
            <numerusform>%n gleiche Zeile eingeklappt: ein Klick zeigt, was hier steht.</numerusform>
            <numerusform>%n gleiche Zeilen eingeklappt: ein Klick zeigt, was hier steht.</numerusform>
        </translation>
    </message>
    <message>
        <source>A task holds two databases: a reference, and a target that is changed to be like it. Velmora shows how they differ and writes the script that makes the target equal.</source>
        <translation>Eine Aufgabe umfasst zwei Datenbanken: eine Referenz und ein Ziel, das ihr angeglichen wird. Velmora zeigt, worin sie sich unterscheiden, und schreibt das Skript, mit dem das Ziel gleich wird.</translation>
    </message>
    <message>
        <source>&amp;New task...</source>
        <translation>&amp;Neue Aufgabe...</translation>
    </message>
    <message>
        <source>O&amp;pen task...</source>
        <translation>Aufga&amp;be öffnen...</translation>
    </message>
    <message>
        <source>Recent tasks</source>
        <translation>Zuletzt geöffnete Aufgaben</translation>
    </message>
    <message>
        <source>Find:</source>
        <translation>Suchen:</translation>
    </message>
    <message>
        <source>Next (Enter)</source>
        <translation>Weitersuchen (Eingabe)</translation>
    </message>
    <message>
        <source>Previous (Shift+Enter)</source>
        <translation>Rückwärts suchen (Umschalt+Eingabe)</translation>
    </message>
    <message>
        <source>Close (Escape)</source>
        <translation>Schließen (Esc)</translation>
    </message>
    <message>
        <source>Not found</source>
        <translation>Nicht gefunden</translation>
    </message>
    <message>
        <source>A local socket leads to a server on this computer: write localhost as the server, or leave the socket empty.</source>
        <translation>Ein lokaler Socket führt zu einem Server auf diesem Rechner: Geben Sie localhost als Server an, oder lassen Sie den Socket leer.</translation>
    </message>
    <message>
        <source>Cannot enter %1: %2</source>
        <translation>%1 lässt sich nicht öffnen: %2</translation>
    </message>
    <message>
        <source>The usual port is 3306. With it, a server on localhost is reached by its socket, if there is one, and by TCP otherwise. Write 127.0.0.1 for TCP alone.</source>
        <translation>Der übliche Port ist 3306. Mit ihm wird ein Server auf localhost über seinen Socket erreicht, wenn es einen gibt, sonst über TCP. Geben Sie 127.0.0.1 an, um nur TCP zu benutzen.</translation>
    </message>
    <message>
        <source>For files of dBASE and FoxPro that do not name theirs, or name a wrong one: 850, CP1252, KOI8-R</source>
        <translation>Für Dateien von dBASE und FoxPro, die keine oder eine falsche nennen: 850, CP1252, KOI8-R</translation>
    </message>
    <message>
        <source>Browse</source>
        <translation>Durchsuchen</translation>
    </message>
    <message>
        <source>Browse: %1</source>
        <translation>Durchsuchen: %1</translation>
    </message>
    <message>
        <source>P&amp;ort</source>
        <translation>P&amp;ort</translation>
    </message>
    <message>
        <source>usual</source>
        <comment>port</comment>
        <translation>üblicher</translation>
    </message>
    <message>
        <source>&amp;More</source>
        <translation>&amp;Mehr</translation>
    </message>
    <message>
        <source>TLS, certificates, local socket, login</source>
        <translation>TLS, Zertifikate, lokaler Socket, Anmeldung</translation>
    </message>
    <message>
        <source>&amp;TLS</source>
        <translation>&amp;TLS</translation>
    </message>
    <message>
        <source>CA certi&amp;ficates</source>
        <translation>CA-Zerti&amp;fikate</translation>
    </message>
    <message>
        <source>Client c&amp;ertificate</source>
        <translation>Client-Z&amp;ertifikat</translation>
    </message>
    <message>
        <source>Client ke&amp;y</source>
        <translation>Client-Schlüsse&amp;l</translation>
    </message>
    <message>
        <source>Local soc&amp;ket</source>
        <translation>Lokaler Soc&amp;ket</translation>
    </message>
    <message>
        <source>Ser&amp;ver&apos;s public key</source>
        <translation>Öffentlicher Schlüssel des Ser&amp;vers</translation>
    </message>
    <message>
        <source>Trust the pu&amp;blic key that the server sends</source>
        <translation>Dem öffentlichen Schlüssel vertr&amp;auen, den der Server sendet</translation>
    </message>
    <message>
        <source>&amp;Allow old logins, which show the password</source>
        <translation>Alte Anmeldungen &amp;zulassen, die das Passwort zeigen</translation>
    </message>
    <message>
        <source>Code &amp;page</source>
        <translation>Code&amp;page</translation>
    </message>
    <message>
        <source>as the files say</source>
        <translation>wie in den Dateien angegeben</translation>
    </message>
    <message>
        <source>Table</source>
        <translation>Tabelle</translation>
    </message>
    <message>
        <source>Column</source>
        <translation>Spalte</translation>
    </message>
    <message>
        <source>In the source</source>
        <translation>In der Quelle</translation>
    </message>
    <message>
        <source>In MySQL</source>
        <translation>In MySQL</translation>
    </message>
    <message>
        <source>Level</source>
        <translation>Stufe</translation>
    </message>
    <message>
        <source>What to know</source>
        <translation>Hinweis</translation>
    </message>
    <message>
        <source>info</source>
        <translation>Hinweis</translation>
    </message>
    <message>
        <source>warning</source>
        <translation>Warnung</translation>
    </message>
    <message>
        <source>refused</source>
        <translation>abgelehnt</translation>
    </message>
    <message>
        <source>(after the next analysis)</source>
        <translation>(nach der nächsten Analyse)</translation>
    </message>
    <message>
        <source>State</source>
        <translation>Zustand</translation>
    </message>
    <message>
        <source>Statement</source>
        <translation>Anweisung</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Dauer</translation>
    </message>
    <message>
        <source>Rows</source>
        <translation>Datensätze</translation>
    </message>
    <message>
        <source>Line</source>
        <translation>Zeile</translation>
    </message>
    <message>
        <source>In force</source>
        <translation>In Kraft</translation>
    </message>
    <message>
        <source>Server&apos;s words</source>
        <translation>Meldung des Servers</translation>
    </message>
    <message>
        <source>%1 (and %2 more)</source>
        <translation>%1 (und %2 weitere)</translation>
    </message>
    <message>
        <source>&amp;Copy report</source>
        <translation>Bericht &amp;kopieren</translation>
    </message>
    <message>
        <source>Copy the report of the run as text</source>
        <translation>Den Bericht über die Ausführung als Text kopieren</translation>
    </message>
    <message>
        <source>Save re&amp;port...</source>
        <translation>Bericht s&amp;peichern...</translation>
    </message>
    <message>
        <source>Save the report of the run as a text file</source>
        <translation>Den Bericht über die Ausführung als Textdatei speichern</translation>
    </message>
    <message>
        <source>Statements of the run</source>
        <translation>Anweisungen der Ausführung</translation>
    </message>
    <message>
        <source>The chosen statement and the server&apos;s words</source>
        <translation>Die gewählte Anweisung und die Meldung des Servers</translation>
    </message>
    <message>
        <source>Out of memory</source>
        <translation>Der Speicher reicht nicht aus</translation>
    </message>
    <message>
        <source>Makes the structure of a MySQL database equal to that of a reference.</source>
        <translation>Gleicht die Struktur einer MySQL-Datenbank der einer Referenz an.</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Open a script file in the script tab</source>
        <translation>Eine Skriptdatei auf der Seite des Skripts öffnen</translation>
    </message>
    <message>
        <source>New sync task</source>
        <translation>Neue Aufgabe</translation>
    </message>
    <message>
        <source>Open a sync task</source>
        <translation>Eine Aufgabe öffnen</translation>
    </message>
    <message>
        <source>Save the sync task</source>
        <translation>Die Aufgabe speichern</translation>
    </message>
    <message>
        <source>Compare both databases</source>
        <translation>Beide Datenbanken vergleichen</translation>
    </message>
    <message>
        <source>Run the script on the target database</source>
        <translation>Das Skript in der Zieldatenbank ausführen</translation>
    </message>
    <message>
        <source>Take the focused action out of the script</source>
        <translation>Die gewählte Aktion aus dem Skript nehmen</translation>
    </message>
    <message>
        <source>Swap sides</source>
        <translation>Seiten tauschen</translation>
    </message>
    <message>
        <source>Task...</source>
        <translation>Aufgabe...</translation>
    </message>
    <message>
        <source>Colour of the task, and what is asked before a run</source>
        <translation>Farbe der Aufgabe, und was vor einer Ausführung gefragt wird</translation>
    </message>
    <message>
        <source>Comparison...</source>
        <translation>Vergleich...</translation>
    </message>
    <message>
        <source>Save report...</source>
        <translation>Bericht speichern...</translation>
    </message>
    <message>
        <source>The report is in %1</source>
        <translation>Der Bericht steht in %1</translation>
    </message>
    <message>
        <source>Mapping...</source>
        <translation>Zuordnung...</translation>
    </message>
    <message>
        <source>Rename instead</source>
        <translation>Stattdessen umbenennen</translation>
    </message>
    <message>
        <source>Take what goes and what is new in its place for one thing under another name</source>
        <translation>Was wegfällt und was an seiner Stelle neu ist, als dasselbe unter anderem Namen ansehen</translation>
    </message>
    <message>
        <source>Map column to...</source>
        <translation>Spalte zuordnen...</translation>
    </message>
    <message>
        <source>A type of your own for the column of the focused action</source>
        <translation>Ein eigener Typ für die Spalte der gewählten Aktion</translation>
    </message>
    <message>
        <source>Next place</source>
        <translation>Nächste Stelle</translation>
    </message>
    <message>
        <source>Go to the next place where the two texts differ</source>
        <translation>Zur nächsten Stelle gehen, an der sich die beiden Texte unterscheiden</translation>
    </message>
    <message>
        <source>Previous place</source>
        <translation>Vorige Stelle</translation>
    </message>
    <message>
        <source>Go to the place before where the two texts differ</source>
        <translation>Zur vorigen Stelle gehen, an der sich die beiden Texte unterscheiden</translation>
    </message>
    <message>
        <source>Undo tick or deletion</source>
        <translation>Häkchen oder Löschen rückgängig machen</translation>
    </message>
    <message>
        <source>Take back the last change of the sync actions</source>
        <translation>Die letzte Änderung an den Aktionen zurücknehmen</translation>
    </message>
    <message>
        <source>Redo tick or deletion</source>
        <translation>Häkchen oder Löschen wiederholen</translation>
    </message>
    <message>
        <source>Make the change again that was taken back</source>
        <translation>Die zurückgenommene Änderung wiederholen</translation>
    </message>
    <message>
        <source>Next difference</source>
        <translation>Nächster Unterschied</translation>
    </message>
    <message>
        <source>Previous difference</source>
        <translation>Voriger Unterschied</translation>
    </message>
    <message>
        <source>Filter sync actions</source>
        <translation>Aktionen filtern</translation>
    </message>
    <message>
        <source>Go to statement or action</source>
        <translation>Zur Anweisung oder Aktion gehen</translation>
    </message>
    <message>
        <source>Show the focused action&apos;s statement in the script, or the action of the statement at the caret</source>
        <translation>Die Anweisung der gewählten Aktion im Skript zeigen, oder die Aktion der Anweisung an der Schreibmarke</translation>
    </message>
    <message>
        <source>Comparison</source>
        <translation>Vergleich</translation>
    </message>
    <message>
        <source>A fatal error has ended Velmora, or velmora-cli.

The report below tells where in the program that was. It holds no passwords and no rows; names of databases, tables and files may stand in it. Nothing is sent by itself: if you can, send it to %1, with a word on what you were doing.

Reports stay in %2.</source>
        <translation>Ein schwerer Fehler hat Velmora oder velmora-cli beendet.

Der Bericht unten sagt, an welcher Stelle des Programms das war. Er enthält keine Passwörter und keine Datensätze; Namen von Datenbanken, Tabellen und Dateien können darin stehen. Von selbst wird nichts gesendet: Schicken Sie ihn, wenn Sie können, an %1, mit ein paar Worten dazu, was Sie gerade getan haben.

Berichte bleiben in %2.</translation>
    </message>
    <message>
        <source>Crash report</source>
        <translation>Absturzbericht</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Save...</source>
        <translation>Speichern...</translation>
    </message>
    <message>
        <source>Tables</source>
        <translation>Tabellen</translation>
    </message>
    <message>
        <source>Velmora Help</source>
        <translation>Hilfe zu Velmora</translation>
    </message>
    <message>
        <source>Help pages</source>
        <translation>Seiten der Hilfe</translation>
    </message>
    <message>
        <source>Back</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>Forward</source>
        <translation>Vor</translation>
    </message>
    <message>
        <source>The script was edited and is not saved. Discard it?</source>
        <translation>Das Skript wurde bearbeitet und ist nicht gespeichert. Verwerfen?</translation>
    </message>
    <message>
        <source>Go on all the same?</source>
        <translation>Trotzdem weitermachen?</translation>
    </message>
    <message>
        <source>%1: press F9 to analyze.</source>
        <translation>%1: F9 startet die Analyse.</translation>
    </message>
    <message>
        <source>This server is %1.</source>
        <translation>Dieser Server ist %1.</translation>
    </message>
    <message>
        <source>Analyze in the %1</source>
        <translation>Analysieren: %1</translation>
    </message>
    <message>
        <source>The target becomes the reference, and the reference the target</source>
        <translation>Das Ziel wird zur Referenz und die Referenz zum Ziel</translation>
    </message>
    <message>
        <source>Reference: %1</source>
        <translation>Referenz: %1</translation>
    </message>
    <message>
        <source>Target: %1</source>
        <translation>Ziel: %1</translation>
    </message>
    <message>
        <source>The marks are kept when the task is saved.</source>
        <translation>Die Kennzeichnung bleibt erhalten, wenn die Aufgabe gespeichert wird.</translation>
    </message>
    <message>
        <source>E&amp;xtras</source>
        <translation>E&amp;xtras</translation>
    </message>
    <message>
        <source>Differences, messages, script</source>
        <translation>Unterschiede, Meldungen, Skript</translation>
    </message>
    <message>
        <source>Run</source>
        <comment>page</comment>
        <translation>Ausführung</translation>
    </message>
    <message>
        <source>Server of the reference</source>
        <translation>Server der Referenz</translation>
    </message>
    <message>
        <source>Server of the target</source>
        <translation>Server des Ziels</translation>
    </message>
    <message>
        <source>How the databases are compared</source>
        <translation>Wie die Datenbanken verglichen werden</translation>
    </message>
    <message>
        <source>What the columns of the reference become in MySQL, your own rules, and what is accepted without a form there</source>
        <translation>Was aus den Spalten der Referenz in MySQL wird, eigene Regeln, und was ohne eine Form dort hingenommen wird</translation>
    </message>
    <message>
        <source>What is compared, and how it is written: definers and more</source>
        <translation>Was verglichen wird, und wie es geschrieben wird: Definer und mehr</translation>
    </message>
    <message>
        <source>For the automatic or the exact dialect</source>
        <translation>Für den Dialekt Automatic oder Exact</translation>
    </message>
    <message>
        <source>For a reference that is not MySQL, in the automatic or the exact dialect</source>
        <translation>Für eine Referenz, die nicht MySQL ist, im Dialekt Automatic oder Exact</translation>
    </message>
    <message>
        <source>Show and accept...</source>
        <translation>Zeigen und hinnehmen...</translation>
    </message>
    <message numerus="yes">
        <source>No form in MySQL: %n element(s) of the reference. The databases are not identical before that is accepted.</source>
        <translation>
            <numerusform>Ohne Form in MySQL: %n Element der Referenz. Die Datenbanken sind nicht gleich, solange das nicht hingenommen ist.</numerusform>
            <numerusform>Ohne Form in MySQL: %n Elemente der Referenz. Die Datenbanken sind nicht gleich, solange das nicht hingenommen ist.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Accepted: %n element(s) without a form in MySQL</source>
        <translation>
            <numerusform>Hingenommen: %n Element ohne Form in MySQL</numerusform>
            <numerusform>Hingenommen: %n Elemente ohne Form in MySQL</numerusform>
        </translation>
    </message>
    <message>
        <source>The reference has no column %1</source>
        <translation>Die Referenz hat keine Spalte %1</translation>
    </message>
    <message>
        <source>Rename %1 to %2 instead (score %3)</source>
        <translation>%1 stattdessen in %2 umbenennen (Übereinstimmung %3)</translation>
    </message>
    <message>
        <source>Do not rename %1 to %2</source>
        <translation>%1 nicht in %2 umbenennen</translation>
    </message>
    <message>
        <source>Nothing that is new may be what the focused action is about</source>
        <translation>Nichts Neues kann das sein, worum es in der gewählten Aktion geht</translation>
    </message>
    <message>
        <source>This is kept when the task is saved. Press F9 to analyze.</source>
        <translation>Das bleibt erhalten, wenn die Aufgabe gespeichert wird. F9 startet die Analyse.</translation>
    </message>
    <message>
        <source>(and %1 more)</source>
        <translation>(und %1 weitere)</translation>
    </message>
    <message numerus="yes">
        <source>Run %n statement(s) on %1?</source>
        <translation>
            <numerusform>%n Anweisung ausführen? Ziel: %1</numerusform>
            <numerusform>%n Anweisungen ausführen? Ziel: %1</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n change(s) of this script can lose data:</source>
        <translation>
            <numerusform>Bei %n Änderung dieses Skripts können Daten verloren gehen:</numerusform>
            <numerusform>Bei %n Änderungen dieses Skripts können Daten verloren gehen:</numerusform>
        </translation>
    </message>
    <message>
        <source>Nothing in it was found to lose data.</source>
        <translation>Darin wurde nichts gefunden, wodurch Daten verloren gehen.</translation>
    </message>
    <message>
        <source>Perhaps renamed only; &quot;Rename ... instead&quot; in the context menu keeps the values:</source>
        <translation>Vielleicht nur umbenannt; „... stattdessen ... umbenennen“ im Kontextmenü erhält die Werte:</translation>
    </message>
    <message>
        <source>%1 to %2</source>
        <comment>a rename</comment>
        <translation>%1 in %2</translation>
    </message>
    <message>
        <source>Rows of the target stand in the way of the script, or could not be checked:</source>
        <translation>Datensätze des Ziels stehen dem Skript im Weg oder konnten nicht geprüft werden:</translation>
    </message>
    <message>
        <source>Run the script nevertheless?</source>
        <translation>Das Skript trotzdem ausführen?</translation>
    </message>
    <message>
        <source>Nothing was run.</source>
        <translation>Es wurde nichts ausgeführt.</translation>
    </message>
    <message>
        <source>The script is no longer the one that ran.</source>
        <translation>Das Skript ist nicht mehr dasselbe, das ausgeführt wurde.</translation>
    </message>
    <message>
        <source>There is no further difference.</source>
        <translation>Es gibt keinen weiteren Unterschied.</translation>
    </message>
    <message>
        <source>There is no difference before this one.</source>
        <translation>Vor diesem gibt es keinen Unterschied.</translation>
    </message>
    <message>
        <source>The script does not hold the planned statement of: %1</source>
        <translation>Das Skript enthält nicht die geplante Anweisung zu: %1</translation>
    </message>
    <message>
        <source>Not ticked, so the script does not make it: %1</source>
        <translation>Nicht angehakt, deshalb nicht im Skript: %1</translation>
    </message>
    <message>
        <source>Nothing was compared yet: F9 in the main window shows what the columns become.</source>
        <translation>Noch wurde nichts verglichen: F9 im Hauptfenster zeigt, was aus den Spalten wird.</translation>
    </message>
    <message>
        <source>What the reference has and MySQL has no form for. As long as any of it is not accepted, the databases are not identical; what is accepted stays in the target as it is.</source>
        <translation>Was die Referenz hat und wofür es in MySQL keine Form gibt. Solange etwas davon nicht hingenommen ist, sind die Datenbanken nicht gleich; was hingenommen ist, bleibt im Ziel, wie es ist.</translation>
    </message>
    <message>
        <source>Your own types come before the usual ones.</source>
        <translation>Eigene Typen gehen den üblichen vor.</translation>
    </message>
    <message>
        <source>Kept when the task is saved. OK compares again what was compared.</source>
        <translation>Bleibt erhalten, wenn die Aufgabe gespeichert wird. OK vergleicht neu, was schon verglichen war.</translation>
    </message>
    <message>
        <source>Decimals &amp;without digits behind the point become integers</source>
        <translation>Dezimaltypen ohne Nachkommastellen &amp;werden zu ganzen Zahlen</translation>
    </message>
    <message>
        <source>&amp;Strict types: one that holds more than the source&apos;s is a difference, too</source>
        <translation>&amp;Strenge Typen: Auch einer, der mehr fasst als der Typ der Quelle, ist ein Unterschied</translation>
    </message>
    <message>
        <source>ti&amp;mestamp may stand for datetime, though it ends in 2038</source>
        <translation>ti&amp;mestamp darf für datetime stehen, obwohl es 2038 endet</translation>
    </message>
    <message>
        <source>&amp;Drop tables that the target alone has (unsafe)</source>
        <translation>Tabellen &amp;löschen, die nur das Ziel hat (unsicher)</translation>
    </message>
    <message>
        <source>Mapping</source>
        <translation>Zuordnung</translation>
    </message>
    <message>
        <source>Columns</source>
        <translation>Spalten</translation>
    </message>
    <message>
        <source>Rules</source>
        <translation>Regeln</translation>
    </message>
    <message>
        <source>No form in MySQL</source>
        <translation>Ohne Form in MySQL</translation>
    </message>
    <message>
        <source>Options</source>
        <translation>Optionen</translation>
    </message>
    <message>
        <source>Filter</source>
        <translation>Filter</translation>
    </message>
    <message>
        <source>Filter of the columns</source>
        <translation>Filter der Spalten</translation>
    </message>
    <message>
        <source>All</source>
        <translation>Alle</translation>
    </message>
    <message>
        <source>Warnings and refused</source>
        <translation>Warnungen und Abgelehntes</translation>
    </message>
    <message>
        <source>Refused</source>
        <translation>Abgelehntes</translation>
    </message>
    <message>
        <source>By your rules</source>
        <translation>Nach eigenen Regeln</translation>
    </message>
    <message>
        <source>Which columns are shown</source>
        <translation>Welche Spalten gezeigt werden</translation>
    </message>
    <message>
        <source>&amp;Map to...</source>
        <translation>&amp;Zuordnen...</translation>
    </message>
    <message>
        <source>Decides for</source>
        <translation>Entscheidet für</translation>
    </message>
    <message>
        <source>&amp;Change...</source>
        <translation>Ä&amp;ndern...</translation>
    </message>
    <message>
        <source>&amp;Remove</source>
        <translation>&amp;Entfernen</translation>
    </message>
    <message>
        <source>&amp;Add...</source>
        <translation>&amp;Hinzufügen...</translation>
    </message>
    <message>
        <source>What has no form in MySQL</source>
        <translation>Was in MySQL keine Form hat</translation>
    </message>
    <message>
        <source>Accepted</source>
        <translation>Hingenommen</translation>
    </message>
    <message>
        <source>Kind</source>
        <translation>Art</translation>
    </message>
    <message>
        <source>Why</source>
        <translation>Warum</translation>
    </message>
    <message>
        <source>Accept &amp;all</source>
        <translation>&amp;Alles hinnehmen</translation>
    </message>
    <message>
        <source>Write all &amp;names in lower case</source>
        <translation>Alle &amp;Namen klein schreiben</translation>
    </message>
    <message>
        <source>the server&apos;s own of utf8mb4</source>
        <translation>die des Servers für utf8mb4</translation>
    </message>
    <message>
        <source>Colla&amp;tion of new tables and columns</source>
        <translation>Kolla&amp;tion neuer Tabellen und Spalten</translation>
    </message>
    <message>
        <source>For a column (orders.total), for a type of the source with its size (number(10,2)), or for a type (number). The nearest one decides.</source>
        <translation>Für eine Spalte (orders.total), für einen Typ der Quelle mit seiner Größe (number(10,2)) oder für einen Typ (number). Die genaueste Regel entscheidet.</translation>
    </message>
    <message>
        <source>Rule of the mapping</source>
        <translation>Regel der Zuordnung</translation>
    </message>
    <message>
        <source>&amp;In the source</source>
        <translation>&amp;In der Quelle</translation>
    </message>
    <message>
        <source>&amp;Type of MySQL&apos;s</source>
        <translation>&amp;Typ in MySQL</translation>
    </message>
    <message>
        <source>In the exact dialect, which the automatic one chooses for the servers of today: %1</source>
        <translation>Im Dialekt Exact, den Automatic für heutige Server wählt: %1</translation>
    </message>
    <message>
        <source>what the target alone has of these is ticked as soon as it is found. Otherwise it stands in the list unticked, and the script leaves it where it is.</source>
        <translation>Was davon nur das Ziel hat, wird angehakt, sobald es gefunden ist. Sonst steht es ohne Häkchen in der Liste, und das Skript lässt es, wo es ist.</translation>
    </message>
    <message>
        <source>a table&apos;s other engine is ticked as soon as it is found. Otherwise it stands in the list unticked.</source>
        <translation>Die andere Engine einer Tabelle wird angehakt, sobald sie gefunden ist. Sonst steht sie ohne Häkchen in der Liste.</translation>
    </message>
    <message>
        <source>a script of the analysis in which nothing loses data runs without a question. What may lose data, a text that you have changed, and a task that asks for it are always asked about.</source>
        <translation>Ein Skript der Analyse, bei dem keine Daten verloren gehen, wird ohne Frage ausgeführt. Gefragt wird immer, wenn Daten verloren gehen können, wenn Sie den Text geändert haben und wenn die Aufgabe es verlangt.</translation>
    </message>
    <message>
        <source>each script that the analysis makes is copied to the clipboard, too.</source>
        <translation>Jedes Skript, das die Analyse erzeugt, wird auch in die Zwischenablage kopiert.</translation>
    </message>
    <message>
        <source>names stand in backticks whatever this says, as no other form is safe for every name.</source>
        <translation>Namen stehen unabhängig davon in Backticks, weil keine andere Form für jeden Namen sicher ist.</translation>
    </message>
    <message>
        <source>the messages name what they otherwise count: what the patterns of Only and Except leave out, and what became of each column of a source that is not MySQL.</source>
        <translation>Die Meldungen nennen, was sie sonst nur zählen: was die Muster unter „Only“ und „Except“ auslassen, und was aus jeder Spalte einer Quelle wurde, die nicht MySQL ist.</translation>
    </message>
    <message>
        <source>the patterns of Only and Except (Extras &gt; Comparison) hold. Otherwise all is compared.</source>
        <translation>Die Muster unter „Only“ und „Except“ (Extras &gt; Vergleich) gelten. Sonst wird alles verglichen.</translation>
    </message>
    <message>
        <source>foreign keys are added without a look at the rows, as by --fast-foreign-keys: rows without a counterpart are asked for by a query before.</source>
        <translation>Fremdschlüssel werden ohne Blick auf die Datensätze angelegt, wie mit --fast-foreign-keys: Nach Datensätzen ohne Gegenstück wird vorher mit einer Abfrage gesucht.</translation>
    </message>
    <message>
        <source>the latest task is opened and analyzed when the program starts.</source>
        <translation>Die letzte Aufgabe wird beim Start des Programms geöffnet und analysiert.</translation>
    </message>
    <message>
        <source> pt</source>
        <comment>points of a font</comment>
        <translation> pt</translation>
    </message>
    <message>
        <source>Cut connection</source>
        <translation>Verbindung trennen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Ends what is under way (Esc)</source>
        <translation>Beendet, was gerade läuft (Esc)</translation>
    </message>
    <message>
        <source>Cancelling...</source>
        <translation>Wird abgebrochen...</translation>
    </message>
    <message>
        <source>Ends the connection without waiting for the server (Esc)</source>
        <translation>Beendet die Verbindung, ohne auf den Server zu warten (Esc)</translation>
    </message>
    <message>
        <source>All files</source>
        <translation>Alle Dateien</translation>
    </message>
    <message>
        <source>Cannot open %1: no program on this system takes it</source>
        <translation>%1 lässt sich nicht öffnen: Kein Programm auf diesem System ist dafür zuständig</translation>
    </message>
    <message>
        <source>Type the name of the database, %1, to run the script:</source>
        <translation>Geben Sie den Namen der Datenbank ein, %1, um das Skript auszuführen:</translation>
    </message>
    <message>
        <source>Name of the database</source>
        <translation>Name der Datenbank</translation>
    </message>
    <message>
        <source>For a target that matters: the colour stands at the top of the window and in the question before a run. Marks are kept when the task is saved.</source>
        <translation>Für ein Ziel, auf das es ankommt: Die Farbe steht oben im Fenster und in der Frage vor einer Ausführung. Die Kennzeichnung bleibt erhalten, wenn die Aufgabe gespeichert wird.</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Keine</translation>
    </message>
    <message>
        <source>Red</source>
        <translation>Rot</translation>
    </message>
    <message>
        <source>Orange</source>
        <translation>Orange</translation>
    </message>
    <message>
        <source>Yellow</source>
        <translation>Gelb</translation>
    </message>
    <message>
        <source>Green</source>
        <translation>Grün</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>Blau</translation>
    </message>
    <message>
        <source>Purple</source>
        <translation>Violett</translation>
    </message>
    <message>
        <source>Ask me to type the &amp;database&apos;s name before a run</source>
        <translation>Vor einer Ausführung den Namen der &amp;Datenbank eingeben lassen</translation>
    </message>
    <message>
        <source>Task</source>
        <translation>Aufgabe</translation>
    </message>
    <message>
        <source>&amp;Colour</source>
        <translation>&amp;Farbe</translation>
    </message>
    <message>
        <source>Enciphered as in a task file, with a key that is the same in every copy of the program: hidden from a casual look and from nobody else. Without it the list has no passwords.</source>
        <translation>Verschlüsselt wie in einer Aufgabendatei, mit einem Schlüssel, der in jeder Kopie des Programms derselbe ist: vor einem beiläufigen Blick verborgen und vor niemandem sonst. Ohne das Häkchen enthält die Liste keine Passwörter.</translation>
    </message>
    <message>
        <source>Finish and A&amp;nalyze</source>
        <translation>Fertigstellen und a&amp;nalysieren</translation>
    </message>
    <message>
        <source>Anot&amp;her database or file:</source>
        <translation>Andere Daten&amp;bank oder Datei:</translation>
    </message>
    <message>
        <source>Choose one that was used before</source>
        <translation>Eine früher benutzte wählen</translation>
    </message>
    <message>
        <source>&amp;Recent connections</source>
        <translation>F&amp;rühere Verbindungen</translation>
    </message>
    <message>
        <source>For&amp;get</source>
        <translation>Ver&amp;gessen</translation>
    </message>
    <message>
        <source>Take the chosen connection out of the list, with its password</source>
        <translation>Die gewählte Verbindung mit ihrem Passwort aus der Liste nehmen</translation>
    </message>
    <message>
        <source>Keep the password &amp;in the list of recent connections</source>
        <translation>Das Passwort &amp;in der Liste der früheren Verbindungen behalten</translation>
    </message>
    <message>
        <source>Waiting for the server...</source>
        <translation>Warten auf den Server...</translation>
    </message>
    <message>
        <source>Certificates and keys</source>
        <translation>Zertifikate und Schlüssel</translation>
    </message>
    <message>
        <source>Text file</source>
        <translation>Textdatei</translation>
    </message>
    <message>
        <source>What the exact dialect compares, and how it writes and runs what differs. Where a field takes several lines, each stands on its own. All of it is kept when the task is saved.</source>
        <translation>Was der Dialekt Exact vergleicht, und wie er schreibt und ausführt, was sich unterscheidet. Wo ein Feld mehrere Zeilen fasst, gilt jede für sich. Alles bleibt erhalten, wenn die Aufgabe gespeichert wird.</translation>
    </message>
    <message>
        <source>The latest task is not there now, and was not opened: %1</source>
        <translation>Die letzte Aufgabe ist gerade nicht da und wurde nicht geöffnet: %1</translation>
    </message>
    <message>
        <source>The script is one of your own. Replace it with that of the ticked actions?</source>
        <translation>Das Skript ist Ihr eigenes. Durch das der angehakten Aktionen ersetzen?</translation>
    </message>
    <message>
        <source>This holds for the runs from here on, and is kept when the task is saved.</source>
        <translation>Das gilt von jetzt an für jede Ausführung und bleibt erhalten, wenn die Aufgabe gespeichert wird.</translation>
    </message>
    <message>
        <source>Waiting for the file or driver...</source>
        <translation>Warten auf die Datei oder den Treiber...</translation>
    </message>
</context>
</TS>
