<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de">
    <context>
        <name>Desktop</name>
        <message>
            <source>The file already exists.</source>
            <translation>Die Datei gibt es schon.</translation>
        </message>
        <message>
            <source>Do you want to owerwrite it?</source>
            <translation>Soll sie überschrieben werden?</translation>
        </message>
    </context>
    <context>
        <name>LossReason</name>
        <message>
            <source>no record is made at this place</source>
            <translation>an dieser Stelle entsteht kein Datensatz</translation>
        </message>
        <message>
            <source>text beside child elements</source>
            <translation>Text neben Kindelementen</translation>
        </message>
        <message>
            <source>attributes are left out (-attributes)</source>
            <translation>Attribute werden weggelassen (-attributes)</translation>
        </message>
        <message>
            <source>no column and no table</source>
            <translation>keine Spalte und keine Tabelle</translation>
        </message>
        <message>
            <source>its column is a key, which takes no values</source>
            <translation>die Spalte ist ein Schlüssel und nimmt keine Werte</translation>
        </message>
        <message>
            <source>its column was taken by an element of the same name</source>
            <translation>ein gleichnamiges Element hat die Spalte belegt</translation>
        </message>
        <message>
            <source>another value of the record took its column</source>
            <translation>ein anderer Wert des Datensatzes hat die Spalte belegt</translation>
        </message>
        <message>
            <source>its column cannot hold the value</source>
            <translation>die Spalte kann den Wert nicht aufnehmen</translation>
        </message>
    </context>
    <context>
        <name>Option</name>
        <message>
            <source>XML file to write from the database</source>
            <translation>XML-Datei, die aus der Datenbank geschrieben wird</translation>
        </message>
        <message>
            <source>Replace that file when it is there</source>
            <translation>Diese Datei ersetzen, wenn es sie gibt</translation>
        </message>
        <message>
            <source>the way back: write the database that mdb= names, made with +complete, as this XML file; the database is only read, and no source is named</source>
            <translation>der Weg zurück: die Datenbank, die mdb= nennt und die mit +complete entstand, als diese XML-Datei schreiben; die Datenbank wird nur gelesen, und eine Quelle wird nicht genannt</translation>
        </message>
        <message>
            <source>with export=: replace a file that is there</source>
            <translation>mit export=: eine vorhandene Datei ersetzen</translation>
        </message>
        <message>
            <source>write nothing then</source>
            <translation>dann nichts schreiben</translation>
        </message>
        <message>
            <source>XML &amp;file</source>
            <translation>XML-&amp;Datei</translation>
        </message>
        <message>
            <source>Wildcards possible: prod_*.xml</source>
            <translation>Platzhalter möglich: prod_*.xml</translation>
        </message>
        <message>
            <source>Re&amp;name to</source>
            <translation>Um&amp;benennen in</translation>
        </message>
        <message>
            <source>&amp;URL</source>
            <translation>&amp;URL</translation>
        </message>
        <message>
            <source>User</source>
            <translation>Benutzer</translation>
        </message>
        <message>
            <source>Password</source>
            <translation>Kennwort</translation>
        </message>
        <message>
            <source>Encoding of the sources</source>
            <translation>Zeichensatz der Quellen</translation>
        </message>
        <message>
            <source>Largest size of a packed file when it is unpacked, in MB</source>
            <translation>Größe, die eine gepackte Datei entpackt höchstens haben darf, in MB</translation>
        </message>
        <message>
            <source>what the characters of the sources are, where a declaration is wrong: encoding=windows-1252; a byte order mark is right whatever stands here</source>
            <translation>was die Zeichen der Quellen sind, wo eine Angabe falsch ist: encoding=windows-1252; eine Bytereihenfolge-Marke gilt, was immer hier steht</translation>
        </message>
        <message>
            <source>refuse a packed file that unpacks to more than this</source>
            <translation>eine gepackte Datei abweisen, die entpackt größer ist</translation>
        </message>
        <message>
            <source>Only the elements at these paths</source>
            <translation>Nur die Elemente an diesen Pfaden</translation>
        </message>
        <message>
            <source>//orders/order/item</source>
            <translation>//orders/order/item</translation>
        </message>
        <message>
            <source>take only the elements at this path, and what is in them: only=//orders/order/item; several paths stand with ";" between them</source>
            <translation>nur die Elemente an diesem Pfad nehmen und was in ihnen steht: only=//orders/order/item; zwischen mehreren Pfaden steht ";"</translation>
        </message>
        <message>
            <source>Time limit of a download, in seconds</source>
            <translation>Zeitgrenze für das Herunterladen, in Sekunden</translation>
        </message>
        <message>
            <source>&amp;MDB file</source>
            <translation>&amp;MDB-Datei</translation>
        </message>
        <message>
            <source>Format</source>
            <translation>Format</translation>
        </message>
        <message>
            <source>&amp;Directory for export of delimited text files</source>
            <translation>&amp;Verzeichnis für den Export von Textdateien</translation>
        </message>
        <message>
            <source>Column delimi&amp;ter (\t = tab)</source>
            <translation>&amp;Spaltentrenner (\t = Tabulator)</translation>
        </message>
        <message>
            <source>F&amp;irst line contains column names</source>
            <translation>E&amp;rste Zeile enthält Spaltennamen</translation>
        </message>
        <message>
            <source>&amp;Append to existing files (uncheck to delete previous export)</source>
            <translation>&amp;An vorhandene Dateien anhängen (sonst den letzten Export löschen)</translation>
        </message>
        <message>
            <source>Quotation marks around values that need them</source>
            <translation>Anführungszeichen um Werte, die sie brauchen</translation>
        </message>
        <message>
            <source>Mark of UTF-8 at the beginning of new text files</source>
            <translation>Kennung für UTF-8 am Anfang neuer Textdateien</translation>
        </message>
        <message>
            <source>Lines of text files end in</source>
            <translation>Zeilen der Textdateien enden mit</translation>
        </message>
        <message>
            <source>In text files, for a value that is not there</source>
            <translation>In Textdateien für einen Wert, den es nicht gibt</translation>
        </message>
        <message>
            <source>Dates in text files</source>
            <translation>Datum in Textdateien</translation>
        </message>
        <message>
            <source>File for a summary in JSON</source>
            <translation>Datei für eine Zusammenfassung in JSON</translation>
        </message>
        <message>
            <source>Go on with the next file after an error</source>
            <translation>Nach einem Fehler mit der nächsten Datei weitermachen</translation>
        </message>
        <message>
            <source>Skip files that were loaded before</source>
            <translation>Dateien überspringen, die schon geladen sind</translation>
        </message>
        <message>
            <source>Preview only, write nothing</source>
            <translation>Nur Vorschau, nichts schreiben</translation>
        </message>
        <message>
            <source>Lo&amp;g file</source>
            <translation>Lo&amp;g-Datei</translation>
        </message>
        <message>
            <source>&amp;Re-create database</source>
            <translation>Datenbank &amp;neu anlegen</translation>
        </message>
        <message>
            <source>&amp;Extend database structure</source>
            <translation>Datenbankstruktur er&amp;weitern</translation>
        </message>
        <message>
            <source>Empt&amp;y all tables of the database before import</source>
            <translation>Vor dem Import alle Tabe&amp;llen der Datenbank leeren</translation>
        </message>
        <message>
            <source>One table per element</source>
            <translation>Eine Tabelle je Element</translation>
        </message>
        <message>
            <source>Do not import &amp;wrapping tags</source>
            <translation>Um&amp;hüllende Tags nicht importieren</translation>
        </message>
        <message>
            <source>&amp;Quiet</source>
            <translation>Ohne Rückfragen (&amp;quiet)</translation>
        </message>
        <message>
            <source>Debug</source>
            <translation>Debug</translation>
        </message>
        <message>
            <source>Let nothing pass (strict)</source>
            <translation>Nichts durchgehen lassen (strict)</translation>
        </message>
        <message>
            <source>Import every value</source>
            <translation>Jeden Wert importieren</translation>
        </message>
        <message>
            <source>Typed columns</source>
            <translation>Spalten mit Datentypen</translation>
        </message>
        <message>
            <source>give each new column the narrowest type that all of its values fit: Yes/No, Long Integer, Double or Date/Time; one that a later value does not fit becomes a text</source>
            <translation>jeder neuen Spalte den engsten Typ geben, in den alle ihre Werte passen: Ja/Nein, Long Integer, Double oder Datum/Uhrzeit; eine, in die ein späterer Wert nicht passt, wird Text</translation>
        </message>
        <message>
            <source>texts and memos only</source>
            <translation>nur Texte und Memos</translation>
        </message>
        <message>
            <source>Create ta&amp;ble relations</source>
            <translation>Tabellenbe&amp;ziehungen anlegen</translation>
        </message>
        <message>
            <source>&amp;Primary keys</source>
            <translation>&amp;Primärschlüssel</translation>
        </message>
        <message>
            <source>Foreign &amp;keys</source>
            <translation>&amp;Fremdschlüssel</translation>
        </message>
        <message>
            <source>Import Attribute&amp;s</source>
            <translation>A&amp;ttribute importieren</translation>
        </message>
        <message>
            <source>Column prefix</source>
            <translation>Spaltenvorsilbe</translation>
        </message>
        <message>
            <source>Table name prefix</source>
            <translation>Vorsilbe der Tabellennamen</translation>
        </message>
        <message>
            <source>Table name suffix</source>
            <translation>Nachsilbe der Tabellennamen</translation>
        </message>
        <message>
            <source>Mapping &amp;file</source>
            <translation>Zuordnungs&amp;datei</translation>
        </message>
        <message>
            <source>Otherwise:</source>
            <translation>Sonst:</translation>
        </message>
        <message>
            <source>the XML file; &quot;*&quot; and &quot;?&quot; in its name stand for several letters or one: xml=prod_*.xml converts all matching files, in the order of their names, into one database; several names stand with a vertical bar between them, and xml=@list.txt names a file with a name on each line; xml=- is standard input; what is packed (.gz, .bz2, .xz, .zst, .zip) is unpacked</source>
            <translation>die XML-Datei; &quot;*&quot; und &quot;?&quot; im Namen stehen für mehrere Buchstaben oder einen: xml=prod_*.xml konvertiert alle passenden Dateien in der Reihenfolge ihrer Namen in eine Datenbank; zwischen mehreren Namen steht ein senkrechter Strich, und xml=@liste.txt nennt eine Datei mit einem Namen je Zeile; xml=- ist die Standardeingabe; Gepacktes (.gz, .bz2, .xz, .zst, .zip) wird entpackt</translation>
        </message>
        <message>
            <source>what each XML file is called after its conversion: rename=%p%done/%f%.xml moves it into a folder</source>
            <translation>wie jede XML-Datei nach ihrer Konvertierung heißt: rename=%p%done/%f%.xml verschiebt sie in einen Ordner</translation>
        </message>
        <message>
            <source>the database</source>
            <translation>die Datenbank</translation>
        </message>
        <message>
            <source>write a text file for each table into this folder, which is made when it is missing; the database is a temporary one unless mdb= names it</source>
            <translation>je Tabelle eine Textdatei in diesen Ordner schreiben, der angelegt wird, wenn er fehlt; die Datenbank ist dann eine vorläufige, wenn mdb= keine nennt</translation>
        </message>
        <message>
            <source>write after what is in a file already</source>
            <translation>hinter das schreiben, was schon in einer Datei steht</translation>
        </message>
        <message>
            <source>delete old files first</source>
            <translation>alte Dateien zuerst löschen</translation>
        </message>
        <message>
            <source>a new file begins with the column names</source>
            <translation>eine neue Datei beginnt mit den Spaltennamen</translation>
        </message>
        <message>
            <source>it does not</source>
            <translation>sie tut es nicht</translation>
        </message>
        <message>
            <source>what stands between two values: delimiter=; or delimiter=\t for the tab; a run that may ask asks for it</source>
            <translation>was zwischen zwei Werten steht: delimiter=; oder delimiter=\t für den Tabulator; wenn es fehlt, wird danach gefragt</translation>
        </message>
        <message>
            <source>put values that hold the delimiter, a quotation mark or a line break in quotation marks (RFC 4180)</source>
            <translation>Werte, die den Trenner, ein Anführungszeichen oder einen Zeilenumbruch enthalten, in Anführungszeichen stellen (RFC 4180)</translation>
        </message>
        <message>
            <source>write them as they are</source>
            <translation>sie schreiben, wie sie sind</translation>
        </message>
        <message>
            <source>a new file begins with the three bytes by which Excel knows UTF-8</source>
            <translation>eine neue Datei beginnt mit den drei Bytes, an denen Excel UTF-8 erkennt</translation>
        </message>
        <message>
            <source>how lines end: as on Windows, or as on Linux</source>
            <translation>wie Zeilen enden: wie unter Windows oder wie unter Linux</translation>
        </message>
        <message>
            <source>of many files, leave out one that ends in an error, take back all that came of it, and go on with the next; the status is 1</source>
            <translation>von vielen Dateien eine auslassen, die mit einem Fehler endet, alles zurücknehmen, was von ihr kam, und mit der nächsten weitermachen; der Status ist 1</translation>
        </message>
        <message>
            <source>end with the error</source>
            <translation>mit dem Fehler enden</translation>
        </message>
        <message>
            <source>with -recreate_database: skip files whose content was loaded into this database with +once before; its table velmora_log lists them</source>
            <translation>mit -recreate_database: Dateien überspringen, deren Inhalt mit +once schon in diese Datenbank geladen wurde; ihre Tabelle velmora_log führt sie auf</translation>
        </message>
        <message>
            <source>load them again</source>
            <translation>sie noch einmal laden</translation>
        </message>
        <message>
            <source>write nothing, no file at all, and show what a run would do: its tables with their columns and records, names that would be changed, values that would be left behind, what would end it, and how large the database would be; the status is 3 when something would be left behind</source>
            <translation>nichts schreiben, gar keine Datei, und zeigen, was ein Lauf täte: seine Tabellen mit ihren Spalten und Datensätzen, Namen, die geändert würden, Werte, die zurückblieben, was ihn beenden würde und wie groß die Datenbank würde; der Status ist 3, wenn etwas zurückbliebe</translation>
        </message>
        <message>
            <source>convert</source>
            <translation>umwandeln</translation>
        </message>
        <message>
            <source>write what happened as one JSON object, for scripts, however the run ends; summary=- writes it to standard output, and protocol lines then go to standard error</source>
            <translation>für Skripte als ein JSON-Objekt schreiben, was geschehen ist, wie der Lauf auch endet; summary=- schreibt es auf die Standardausgabe, und die Protokollzeilen gehen dann auf die Fehlerausgabe</translation>
        </message>
        <message>
            <source>what is written for a value that is not there; with +quoted a value that reads the same is put in quotation marks</source>
            <translation>was für einen Wert geschrieben wird, den es nicht gibt; mit +quoted steht ein Wert, der sich ebenso liest, in Anführungszeichen</translation>
        </message>
        <message>
            <source>what stands between date and time: 2024-03-05 14:07:09, or 2024-03-05T14:07:09, where a midnight is the date alone and a time without a date the time alone</source>
            <translation>was zwischen Datum und Uhrzeit steht: 2024-03-05 14:07:09 oder 2024-03-05T14:07:09, wobei Mitternacht als Datum allein und eine Uhrzeit ohne Datum als Uhrzeit allein steht</translation>
        </message>
        <message>
            <source>write the protocol to this file too, after what is in it already</source>
            <translation>das Protokoll auch in diese Datei schreiben, hinter das, was schon darin steht</translation>
        </message>
        <message>
            <source>other names for tags: one a line, tag, tab character, name</source>
            <translation>andere Namen für Tags: je Zeile einer, Tag, Tabulator, Name</translation>
        </message>
        <message>
            <source>download the XML file, with curl, and delete it in the end</source>
            <translation>die XML-Datei mit curl herunterladen und am Ende löschen</translation>
        </message>
        <message>
            <source>the user, where the server asks for one</source>
            <translation>der Benutzer, wo der Server einen verlangt</translation>
        </message>
        <message>
            <source>the user&apos;s password</source>
            <translation>das Kennwort des Benutzers</translation>
        </message>
        <message>
            <source>Threads at most</source>
            <translation>Threads höchstens</translation>
        </message>
        <message>
            <source>As many as there are processors, up to 4</source>
            <translation>So viele, wie es Prozessoren gibt, bis zu 4</translation>
        </message>
        <message>
            <source>do so many things at the same time at most: threads=1 does one after another; without it as many as the machine has processors, and 4 at most; the result is the same</source>
            <translation>höchstens so vieles gleichzeitig tun: threads=1 tut eines nach dem anderen; ohne Angabe so viel, wie der Rechner Prozessoren hat, und höchstens 4; das Ergebnis ist dasselbe</translation>
        </message>
        <message>
            <source>end a download that takes longer; without it, it takes as long as it takes</source>
            <translation>ein Herunterladen beenden, das länger dauert; ohne Angabe dauert es, so lange es dauert</translation>
        </message>
        <message>
            <source>the format of a new database: Access 2000 to 2003, or Access 97</source>
            <translation>das Format einer neuen Datenbank: Access 2000 bis 2003 oder Access 97</translation>
        </message>
        <message>
            <source>delete the database and make a new one; when it cannot be deleted, drop all its tables</source>
            <translation>die Datenbank löschen und neu anlegen; wenn sie sich nicht löschen lässt, alle ihre Tabellen löschen</translation>
        </message>
        <message>
            <source>keep an existing database and add to it</source>
            <translation>eine vorhandene Datenbank behalten und ergänzen</translation>
        </message>
        <message>
            <source>with -recreate_database: name each new table in the protocol; missing tables and columns are added in either case</source>
            <translation>in einer vorhandenen Datenbank: jede neue Tabelle im Protokoll nennen; fehlende Tabellen und Spalten kommen so oder so hinzu</translation>
        </message>
        <message>
            <source>do not name them</source>
            <translation>sie nicht nennen</translation>
        </message>
        <message>
            <source>with -recreate_database: delete the records of all tables first, those that velmora did not make included</source>
            <translation>in einer vorhandenen Datenbank: zuerst die Datensätze aller Tabellen löschen, auch derer, die nicht von velmora sind</translation>
        </message>
        <message>
            <source>keep them</source>
            <translation>sie behalten</translation>
        </message>
        <message>
            <source>import attributes</source>
            <translation>Attribute importieren</translation>
        </message>
        <message>
            <source>leave attributes out</source>
            <translation>Attribute weglassen</translation>
        </message>
        <message>
            <source>what the names of attribute columns begin with; attr=&quot;&quot; for nothing</source>
            <translation>womit die Namen von Attributspalten beginnen; leer für nichts</translation>
        </message>
        <message>
            <source>one table for each element name, wherever it stands</source>
            <translation>eine Tabelle für jeden Elementnamen, wo immer er steht</translation>
        </message>
        <message>
            <source>one table for each place in the document</source>
            <translation>eine Tabelle für jede Stelle im Dokument</translation>
        </message>
        <message>
            <source>no tables for elements that only wrap others</source>
            <translation>keine Tabellen für Elemente, die nur andere umhüllen</translation>
        </message>
        <message>
            <source>tables for them too</source>
            <translation>auch für sie Tabellen</translation>
        </message>
        <message>
            <source>tie the tables together by key columns, indexes and relations</source>
            <translation>die Tabellen durch Schlüsselspalten, Indizes und Beziehungen verbinden</translation>
        </message>
        <message>
            <source>tables without keys and relations</source>
            <translation>Tabellen ohne Schlüssel und Beziehungen</translation>
        </message>
        <message>
            <source>name of the primary key column</source>
            <translation>Name der Primärschlüsselspalte</translation>
        </message>
        <message>
            <source>name of the foreign key column</source>
            <translation>Name der Fremdschlüsselspalte</translation>
        </message>
        <message>
            <source>what all table names begin with</source>
            <translation>womit alle Tabellennamen beginnen</translation>
        </message>
        <message>
            <source>what all table names end with</source>
            <translation>womit alle Tabellennamen enden</translation>
        </message>
        <message>
            <source>let nothing pass: an unknown word, or a file of tag names that cannot be read, ends the run before the database is touched (status 2); a value that was not imported, a record without a text file or a file that was not renamed makes the status 3</source>
            <translation>nichts durchgehen lassen: ein unbekanntes Wort oder eine Zuordnungsdatei, die sich nicht lesen lässt, beendet den Lauf, bevor die Datenbank berührt wird; was weggelassen wurde, meldet der Endestatus</translation>
        </message>
        <message>
            <source>say so in the protocol and go on</source>
            <translation>es im Protokoll sagen und weitermachen</translation>
        </message>
        <message>
            <source>convert at once, ask nothing</source>
            <translation>sofort konvertieren, nichts fragen</translation>
        </message>
        <message>
            <source>open the window, unless files are named without a key</source>
            <translation>das Fenster öffnen, wenn keine Datei ohne Schlüsselwort genannt ist</translation>
        </message>
        <message>
            <source>trace every step in the protocol file, with the time (needs log=)</source>
            <translation>jeden Schritt mit der Zeit in der Protokolldatei aufzeichnen (braucht eine)</translation>
        </message>
        <message>
            <source>XML (*.xml)|*.xml|All Files (*.*)|*.*</source>
            <translation>XML (*.xml)|*.xml|Alle Dateien (*.*)|*.*</translation>
        </message>
        <message>
            <source>Select XML File to be loaded</source>
            <translation>XML-Datei wählen, die geladen werden soll</translation>
        </message>
        <message>
            <source>Select MDB for export</source>
            <translation>MDB für den Export wählen</translation>
        </message>
        <message>
            <source>MS Access Database (*.mdb)|*.mdb|All Files (*.*)|*.*</source>
            <translation>MS-Access-Datenbank (*.mdb)|*.mdb|Alle Dateien (*.*)|*.*</translation>
        </message>
        <message>
            <source>Select file for logging</source>
            <translation>Datei für das Protokoll wählen</translation>
        </message>
        <message>
            <source>*.log|*.log|*.txt|*.txt|All Files (*.*)|*.*</source>
            <translation>*.log|*.log|*.txt|*.txt|Alle Dateien (*.*)|*.*</translation>
        </message>
        <message>
            <source>Folder for export of text files (tarnwick)</source>
            <translation>Ordner für den Export von Textdateien (tarnwick)</translation>
        </message>
        <message>
            <source>Open mapping</source>
            <translation>Zuordnung öffnen</translation>
        </message>
        <message>
            <source>Tab Separated Values (*.tsv)|*.tsv|All Files (*.*)|*.*</source>
            <translation>Tabulatorgetrennte Werte (*.tsv)|*.tsv|Alle Dateien (*.*)|*.*</translation>
        </message>
        <message>
            <source>JSON (*.json)|*.json|All Files (*.*)|*.*</source>
            <translation>JSON (*.json)|*.json|Alle Dateien (*.*)|*.*</translation>
        </message>
        <message>
            <source>import every value: text beside child elements, lists, empty elements and whatever else the plain rules leave behind; names that the database refuses are changed</source>
            <translation>jeden Wert importieren: Text neben Kindelementen, Listen, leere Elemente und was die einfachen Regeln sonst zurücklassen; Namen, die die Datenbank ablehnt, werden geändert</translation>
        </message>
        <message>
            <source>leave such values out and say so in the protocol</source>
            <translation>solche Werte auslassen und es ins Protokoll schreiben</translation>
        </message>
        <message>
            <source>Source</source>
            <translation>Quelle</translation>
        </message>
        <message>
            <source>Target</source>
            <translation>Ziel</translation>
        </message>
        <message>
            <source>Database</source>
            <translation>Datenbank</translation>
        </message>
        <message>
            <source>Tables and columns</source>
            <translation>Tabellen und Spalten</translation>
        </message>
        <message>
            <source>Text files</source>
            <translation>Textdateien</translation>
        </message>
        <message>
            <source>Running</source>
            <translation>Ablauf</translation>
        </message>
    </context>
    <context>
        <name>Problems</name>
        <message>
            <source>Standard input is read by velmora without a window: name a file here</source>
            <translation>Die Standardeingabe liest velmora ohne Fenster: hier eine Datei nennen</translation>
        </message>
        <message>
            <source>No file matches this</source>
            <translation>Keine Datei passt dazu</translation>
        </message>
        <message>
            <source>There is no such file</source>
            <translation>Diese Datei gibt es nicht</translation>
        </message>
        <message>
            <source>Name a database here, or a folder for text files below</source>
            <translation>Hier eine Datenbank nennen oder unten einen Ordner für Textdateien</translation>
        </message>
        <message>
            <source>There is no such folder</source>
            <translation>Diesen Ordner gibt es nicht</translation>
        </message>
        <message>
            <source>This is a folder: name a file in it</source>
            <translation>Das ist ein Ordner: eine Datei darin nennen</translation>
        </message>
        <message>
            <source>This is a file: name a folder</source>
            <translation>Das ist eine Datei: einen Ordner nennen</translation>
        </message>
        <message>
            <source>The folder above it is missing</source>
            <translation>Der Ordner darüber fehlt</translation>
        </message>
        <message>
            <source>Without a delimiter all values of a line run together</source>
            <translation>Ohne Trenner laufen alle Werte einer Zeile zusammen</translation>
        </message>
        <message>
            <source>A name in Access holds no . ! [ ] and no backquote</source>
            <translation>Ein Name in Access enthält kein . ! [ ] und keinen Gravis</translation>
        </message>
        <message>
            <source>To write XML from the database, leave source and text folder empty</source>
            <translation>Um die Datenbank als XML zu schreiben, Quelle und Textordner leer lassen</translation>
        </message>
        <message>
            <source>The file is there, and is not to be replaced</source>
            <translation>Die Datei gibt es, und sie soll nicht ersetzt werden</translation>
        </message>
        <message>
            <source>Name the database that is to be written as XML</source>
            <translation>Die Datenbank nennen, die als XML geschrieben werden soll</translation>
        </message>
    </context>
    <context>
        <name>QPlatformTheme</name>
        <message>
            <source>OK</source>
            <translation>OK</translation>
        </message>
        <message>
            <source>Cancel</source>
            <translation>Abbrechen</translation>
        </message>
        <message>
            <source>Retry</source>
            <translation>Wiederholen</translation>
        </message>
        <message>
            <source>&amp;Yes</source>
            <translation>&amp;Ja</translation>
        </message>
        <message>
            <source>&amp;No</source>
            <translation>&amp;Nein</translation>
        </message>
    </context>
    <context>
        <name>RenameCodes</name>
        <message>
            <source>folder of the file</source>
            <translation>Ordner der Datei</translation>
        </message>
        <message>
            <source>name of the file, without ending</source>
            <translation>Name der Datei, ohne Endung</translation>
        </message>
        <message>
            <source>year</source>
            <translation>Jahr</translation>
        </message>
        <message>
            <source>month</source>
            <translation>Monat</translation>
        </message>
        <message>
            <source>day</source>
            <translation>Tag</translation>
        </message>
        <message>
            <source>hour</source>
            <translation>Stunde</translation>
        </message>
        <message>
            <source>minute</source>
            <translation>Minute</translation>
        </message>
        <message>
            <source>second</source>
            <translation>Sekunde</translation>
        </message>
        <message>
            <source>into the folder &quot;done&quot; beside it</source>
            <translation>in den Ordner „done“ daneben</translation>
        </message>
        <message>
            <source>with date and time behind its name</source>
            <translation>mit Datum und Zeit hinter dem Namen</translation>
        </message>
        <message>
            <source>Codes</source>
            <translation>Codes</translation>
        </message>
        <message>
            <source>What the new name can be made of</source>
            <translation>Woraus der neue Name bestehen kann</translation>
        </message>
    </context>
    <context>
        <name>RunSummary</name>
        <message>
            <source>A run would end in an error</source>
            <translation>Ein Lauf würde mit einem Fehler enden</translation>
        </message>
        <message>
            <source>A run would leave something behind</source>
            <translation>Ein Lauf würde etwas zurücklassen</translation>
        </message>
        <message>
            <source>A run would be complete</source>
            <translation>Ein Lauf wäre vollständig</translation>
        </message>
        <message>
            <source>%1 s</source>
            <translation>%1 s</translation>
        </message>
        <message>
            <source>Cancelled</source>
            <translation>Abgebrochen</translation>
        </message>
        <message>
            <source>Ended by an error</source>
            <translation>Durch einen Fehler beendet</translation>
        </message>
        <message>
            <source>Error %1</source>
            <translation>Fehler %1</translation>
        </message>
        <message>
            <source>Done, with files that could not be read</source>
            <translation>Fertig, mit Dateien, die nicht gelesen werden konnten</translation>
        </message>
        <message>
            <source>Done</source>
            <translation>Fertig</translation>
        </message>
        <message>
            <source>Nothing was converted: the protocol says why</source>
            <translation>Nichts wurde konvertiert: das Protokoll sagt, warum</translation>
        </message>
        <message>
            <source>%1 file</source>
            <translation>%1 Datei</translation>
        </message>
        <message>
            <source>%1 files</source>
            <translation>%1 Dateien</translation>
        </message>
        <message>
            <source>%1 table</source>
            <translation>%1 Tabelle</translation>
        </message>
        <message>
            <source>%1 tables</source>
            <translation>%1 Tabellen</translation>
        </message>
        <message>
            <source>%1 record</source>
            <translation>%1 Datensatz</translation>
        </message>
        <message>
            <source>%1 records</source>
            <translation>%1 Datensätze</translation>
        </message>
        <message>
            <source>%1 file not read</source>
            <translation>%1 Datei nicht gelesen</translation>
        </message>
        <message>
            <source>%1 files not read</source>
            <translation>%1 Dateien nicht gelesen</translation>
        </message>
        <message>
            <source>the database was written as XML</source>
            <translation>die Datenbank wurde als XML geschrieben</translation>
        </message>
    </context>
    <context>
        <name>TextPage</name>
        <message>
            <source>Save as</source>
            <translation>Speichern unter</translation>
        </message>
        <message>
            <source>Text (*.txt *.log)|*.txt *.log</source>
            <translation>Text (*.txt *.log)|*.txt *.log</translation>
        </message>
    </context>
    <context>
        <name>velmora::AboutPage</name>
        <message>
            <source>&lt;p&gt;Reads XML files and writes what is in them into Access databases or delimited text files, with the tables, keys and relations that it finds in them.&lt;/p&gt;&lt;p&gt;Free software under the MIT licence: use, copy, change and pass it on.&lt;/p&gt;&lt;p&gt;With Qt %1, under the GNU Lesser General Public License 3, and expat, under the MIT licence.&lt;/p&gt;&lt;p&gt;F1 opens the manual.&lt;/p&gt;</source>
            <translation>&lt;p&gt;Liest XML-Dateien und schreibt ihren Inhalt in Access-Datenbanken oder Textdateien, mit den Tabellen, Schlüsseln und Beziehungen, die darin zu finden sind.&lt;/p&gt;&lt;p&gt;Freie Software unter der MIT-Lizenz: benutzen, kopieren, ändern und weitergeben.&lt;/p&gt;&lt;p&gt;Mit Qt %1 unter der GNU Lesser General Public License 3 und expat unter der MIT-Lizenz.&lt;/p&gt;&lt;p&gt;F1 öffnet das Handbuch.&lt;/p&gt;</translation>
        </message>
        <message>
            <source>Version %1</source>
            <translation>Version %1</translation>
        </message>
    </context>
    <context>
        <name>velmora::BrowserWindow</name>
        <message>
            <source>What of the table is shown</source>
            <translation>Was von der Tabelle gezeigt wird</translation>
        </message>
        <message>
            <source>Rows</source>
            <translation>Zeilen</translation>
        </message>
        <message>
            <source>Columns</source>
            <translation>Spalten</translation>
        </message>
        <message>
            <source>Diagram</source>
            <translation>Diagramm</translation>
        </message>
        <message>
            <source>&amp;Stop</source>
            <translation>&amp;Anhalten</translation>
        </message>
        <message>
            <source>Stop reading</source>
            <translation>Das Lesen anhalten</translation>
        </message>
        <message>
            <source>Read &amp;again</source>
            <translation>Neu &amp;lesen</translation>
        </message>
        <message>
            <source>Read the file again (F5)</source>
            <translation>Die Datei neu lesen (F5)</translation>
        </message>
        <message>
            <source>Tables</source>
            <translation>Tabellen</translation>
        </message>
        <message>
            <source>Table</source>
            <translation>Tabelle</translation>
        </message>
        <message>
            <source>Page</source>
            <translation>Seite</translation>
        </message>
        <message>
            <source>Pages of %1 rows</source>
            <translation>Seiten zu %1 Zeilen</translation>
        </message>
        <message>
            <source>Find in the whole table</source>
            <translation>In der ganzen Tabelle suchen</translation>
        </message>
        <message>
            <source>Return finds the next row</source>
            <translation>Die Eingabetaste sucht die nächste Zeile</translation>
        </message>
        <message>
            <source>&amp;Find</source>
            <translation>&amp;Suchen</translation>
        </message>
        <message>
            <source>Find the next row with this text</source>
            <translation>Die nächste Zeile mit diesem Text suchen</translation>
        </message>
        <message>
            <source>&amp;Copy</source>
            <translation>&amp;Kopieren</translation>
        </message>
        <message>
            <source>Copy the selected rows, or all of this page, with headings</source>
            <translation>Die ausgewählten Zeilen oder die ganze Seite kopieren, mit Überschriften</translation>
        </message>
        <message>
            <source>&amp;Page</source>
            <translation>Se&amp;ite</translation>
        </message>
        <message>
            <source>Column</source>
            <translation>Spalte</translation>
        </message>
        <message>
            <source>Type</source>
            <translation>Typ</translation>
        </message>
        <message>
            <source>Required</source>
            <translation>Pflicht</translation>
        </message>
        <message>
            <source>Key</source>
            <translation>Schlüssel</translation>
        </message>
        <message>
            <source>Save as &amp;picture…</source>
            <translation>Als &amp;Bild speichern…</translation>
        </message>
        <message>
            <source>Save the diagram as SVG or PNG</source>
            <translation>Das Diagramm als SVG oder PNG speichern</translation>
        </message>
        <message>
            <source>Sho&amp;w all</source>
            <translation>Alles &amp;zeigen</translation>
        </message>
        <message>
            <source>Show the whole diagram</source>
            <translation>Das ganze Diagramm zeigen</translation>
        </message>
        <message>
            <source>Larger</source>
            <translation>Größer</translation>
        </message>
        <message>
            <source>Zoom in</source>
            <translation>Vergrößern</translation>
        </message>
        <message>
            <source>Smaller</source>
            <translation>Kleiner</translation>
        </message>
        <message>
            <source>Zoom out</source>
            <translation>Verkleinern</translation>
        </message>
        <message>
            <source>Reading…</source>
            <translation>Wird gelesen…</translation>
        </message>
        <message>
            <source>linked</source>
            <translation>verknüpft</translation>
        </message>
        <message>
            <source>yes</source>
            <translation>ja</translation>
        </message>
        <message>
            <source>primary key</source>
            <translation>Primärschlüssel</translation>
        </message>
        <message>
            <source>refers to another table</source>
            <translation>verweist auf eine andere Tabelle</translation>
        </message>
        <message>
            <source>of %1</source>
            <translation>von %1</translation>
        </message>
        <message>
            <source>The table stands in another database, which is not looked at</source>
            <translation>Die Tabelle liegt in einer anderen Datenbank, die nicht geöffnet wird</translation>
        </message>
        <message>
            <source>Reading %1…</source>
            <translation>%1 wird gelesen…</translation>
        </message>
        <message>
            <source>Stopped</source>
            <translation>Angehalten</translation>
        </message>
        <message>
            <source>%1, read only</source>
            <translation>%1, nur lesend</translation>
        </message>
        <message>
            <source>Searching…</source>
            <translation>Wird gesucht…</translation>
        </message>
        <message>
            <source>No further row has this text</source>
            <translation>Keine weitere Zeile enthält diesen Text</translation>
        </message>
        <message>
            <source>Save as picture</source>
            <translation>Als Bild speichern</translation>
        </message>
        <message>
            <source>The picture %1 could not be written</source>
            <translation>Das Bild %1 konnte nicht geschrieben werden</translation>
        </message>
    </context>
    <context>
        <name>velmora::ButtonRow</name>
        <message>
            <source>Pre&amp;view</source>
            <translation>Vorschau</translation>
        </message>
        <message>
            <source>Show what a conversion would do, and write nothing</source>
            <translation>Zeigen, was eine Umwandlung täte, und nichts schreiben</translation>
        </message>
        <message>
            <source>&amp;Job</source>
            <translation>&amp;Job</translation>
        </message>
        <message>
            <source>Keep all that is filled in as a file, open one, or use a database</source>
            <translation>Alles Ausgefüllte als Datei sichern, eine öffnen, oder eine Datenbank verwenden</translation>
        </message>
        <message>
            <source>Command &amp;Line…</source>
            <translation>Befehlsze&amp;ile…</translation>
        </message>
        <message>
            <source>The command line that does the same without a window</source>
            <translation>Die Befehlszeile, die ohne Fenster dasselbe tut</translation>
        </message>
        <message>
            <source>&amp;Open folder</source>
            <translation>&amp;Ordner öffnen</translation>
        </message>
        <message>
            <source>Open the folder of the target or the source</source>
            <translation>Den Ordner des Ziels oder der Quelle öffnen</translation>
        </message>
        <message>
            <source>&amp;Convert</source>
            <translation>&amp;Konvertieren</translation>
        </message>
        <message>
            <source>Convert what is named on the first page (F5)</source>
            <translation>Konvertieren, was die erste Seite nennt (F5)</translation>
        </message>
        <message>
            <source>E&amp;xit</source>
            <translation>B&amp;eenden</translation>
        </message>
        <message>
            <source>Close the window; while a conversion is running, cancel it</source>
            <translation>Das Fenster schließen; während einer Konvertierung diese abbrechen</translation>
        </message>
        <message>
            <source>Working...</source>
            <translation>Läuft...</translation>
        </message>
        <message>
            <source>Cancelling...</source>
            <translation>Wird abgebrochen...</translation>
        </message>
        <message>
            <source>Canc&amp;el</source>
            <translation>Abbre&amp;chen</translation>
        </message>
    </context>
    <context>
        <name>velmora::CommandLineWindow</name>
        <message>
            <source>Command Line</source>
            <translation>Befehlszeile</translation>
        </message>
        <message>
            <source>&amp;Show the password</source>
            <translation>Kennwort &amp;zeigen</translation>
        </message>
        <message>
            <source>&amp;Copy</source>
            <translation>&amp;Kopieren</translation>
        </message>
        <message>
            <source>Copy the command line as it is shown</source>
            <translation>Die Befehlszeile kopieren, wie sie hier steht</translation>
        </message>
        <message>
            <source>C&amp;lose</source>
            <translation>&amp;Schließen</translation>
        </message>
        <message>
            <source>Close this window</source>
            <translation>Dieses Fenster schließen</translation>
        </message>
    </context>
    <context>
        <name>velmora::ConverterPage</name>
        <message>
            <source>Source</source>
            <translation>Quelle</translation>
        </message>
        <message>
            <source>Local file</source>
            <translation>Lokale Datei</translation>
        </message>
        <message>
            <source>URL</source>
            <translation>URL</translation>
        </message>
        <message>
            <source>Open</source>
            <translation>Öffnen</translation>
        </message>
        <message>
            <source>Open the XML file in its program</source>
            <translation>Die XML-Datei in ihrem Programm öffnen</translation>
        </message>
        <message>
            <source>After sucessfull conversion of XML file this file will be renamed</source>
            <translation>Nach erfolgreicher Konvertierung wird die XML-Datei umbenannt</translation>
        </message>
        <message>
            <source>Destination</source>
            <translation>Ziel</translation>
        </message>
        <message>
            <source>Open the database in its program</source>
            <translation>Die Datenbank in ihrem Programm öffnen</translation>
        </message>
        <message>
            <source>Options</source>
            <translation>Optionen</translation>
        </message>
        <message>
            <source>More options</source>
            <translation>Weitere Optionen</translation>
        </message>
        <message>
            <source>Show or hide the options that are needed less often</source>
            <translation>Seltener gebrauchte Optionen zeigen oder verbergen</translation>
        </message>
        <message>
            <source>More options (%1 in use)</source>
            <translation>Weitere Optionen (%1 in Gebrauch)</translation>
        </message>
    </context>
    <context>
        <name>velmora::Diagram</name>
        <message>
            <source>Tables and relations</source>
            <translation>Tabellen und Beziehungen</translation>
        </message>
        <message>
            <source>Tables and relations: drag to move, Ctrl and the wheel to zoom</source>
            <translation>Tabellen und Beziehungen: ziehen zum Verschieben, Strg und Mausrad zum Vergrößern</translation>
        </message>
        <message>
            <source>and %1 more</source>
            <translation>und %1 weitere</translation>
        </message>
    </context>
    <context>
        <name>velmora::JobMenu</name>
        <message>
            <source>Job (*.velmora)|*.velmora|All Files (*.*)|*.*</source>
            <translation>Job (*.velmora)|*.velmora|Alle Dateien (*.*)|*.*</translation>
        </message>
        <message>
            <source>&amp;Open a job…</source>
            <translation>Job ö&amp;ffnen…</translation>
        </message>
        <message>
            <source>&amp;Save as a job…</source>
            <translation>Als Job &amp;speichern…</translation>
        </message>
        <message>
            <source>&amp;Recent files</source>
            <translation>&amp;Zuletzt benutzt</translation>
        </message>
        <message>
            <source>&amp;Look at a database…</source>
            <translation>&amp;Datenbank ansehen…</translation>
        </message>
        <message>
            <source>&amp;Write a database as XML…</source>
            <translation>Datenbank als &amp;XML schreiben…</translation>
        </message>
        <message>
            <source>Open a job</source>
            <translation>Job öffnen</translation>
        </message>
        <message>
            <source>Save as a job</source>
            <translation>Als Job speichern</translation>
        </message>
        <message>
            <source>The job %1 cannot be written: %2</source>
            <translation>Der Job %1 kann nicht geschrieben werden: %2</translation>
        </message>
        <message>
            <source>Look at a database</source>
            <translation>Eine Datenbank ansehen</translation>
        </message>
        <message>
            <source>Database to be written as XML</source>
            <translation>Datenbank, die als XML geschrieben werden soll</translation>
        </message>
    </context>
    <context>
        <name>velmora::LeftOutWindow</name>
        <message>
            <source>Check “Import every value”</source>
            <translation>„Jeden Wert importieren“ ankreuzen</translation>
        </message>
        <message>
            <source>Check “Import Attributes”</source>
            <translation>„Attribute importieren“ wählen</translation>
        </message>
        <message>
            <source>Check “Re-create database”, so that the table gets the column</source>
            <translation>„Datenbank neu anlegen“ wählen, damit die Tabelle die Spalte bekommt</translation>
        </message>
        <message>
            <source>Choose other names for primary and foreign keys</source>
            <translation>Andere Namen für Primär- und Fremdschlüssel wählen</translation>
        </message>
        <message>
            <source>Map one of the names that meet in this column to another one</source>
            <translation>Einem der Namen, die sich in der Spalte treffen, einen anderen zuordnen</translation>
        </message>
        <message>
            <source>Not imported</source>
            <translation>Nicht importiert</translation>
        </message>
        <message>
            <source>Path</source>
            <translation>Pfad</translation>
        </message>
        <message>
            <source>Values</source>
            <translation>Werte</translation>
        </message>
        <message>
            <source>Reason</source>
            <translation>Grund</translation>
        </message>
        <message>
            <source>Example</source>
            <translation>Beispiel</translation>
        </message>
        <message>
            <source>What cures it</source>
            <translation>Was dagegen hilft</translation>
        </message>
        <message>
            <source>&amp;Copy</source>
            <translation>&amp;Kopieren</translation>
        </message>
        <message>
            <source>Copy the list</source>
            <translation>Die Liste kopieren</translation>
        </message>
        <message>
            <source>C&amp;lose</source>
            <translation>&amp;Schließen</translation>
        </message>
        <message>
            <source>Close this window</source>
            <translation>Dieses Fenster schließen</translation>
        </message>
        <message>
            <source>%1 values were not imported.</source>
            <translation>%1 Werte wurden nicht importiert.</translation>
        </message>
        <message>
            <source>The list is cut after %1 lines.</source>
            <translation>Die Liste endet nach %1 Zeilen.</translation>
        </message>
        <message>
            <source>%1, or check “Import every value”</source>
            <translation>%1, oder „Jeden Wert importieren“ ankreuzen</translation>
        </message>
        <message>
            <source>Uncheck “Do not import wrapping tags”</source>
            <translation>Den Haken bei „Umhüllende Tags nicht importieren“ entfernen</translation>
        </message>
        <message>
            <source>Choose another column prefix for attributes, map one of the names</source>
            <translation>Ein anderes Spaltenpräfix für Attribute wählen, einem der Namen einen anderen zuordnen</translation>
        </message>
        <message>
            <source>Make the column a memo in the database, re-create the database</source>
            <translation>Die Spalte in der Datenbank zum Memo machen, die Datenbank neu erstellen</translation>
        </message>
    </context>
    <context>
        <name>velmora::MainWindow</name>
        <message>
            <source>Pages</source>
            <translation>Seiten</translation>
        </message>
        <message>
            <source>Converter</source>
            <translation>Konverter</translation>
        </message>
        <message>
            <source>Tag-mapping</source>
            <translation>Tag-Zuordnung</translation>
        </message>
        <message>
            <source>Progress</source>
            <translation>Verlauf</translation>
        </message>
        <message>
            <source>XML Info</source>
            <translation>XML-Info</translation>
        </message>
        <message>
            <source>About</source>
            <translation>Über</translation>
        </message>
        <message>
            <source>The manual is not installed</source>
            <translation>Das Handbuch ist nicht installiert</translation>
        </message>
        <message>
            <source>Drop XML files that one pattern can name, a folder, a database, or a mapping file</source>
            <translation>Hierher gehören XML-Dateien, die ein Muster benennen kann, ein Ordner, eine Datenbank oder eine Zuordnungsdatei</translation>
        </message>
    </context>
    <context>
        <name>velmora::MappingPage</name>
        <message>
            <source>&amp;Enable Tag-mapping</source>
            <translation>Tag-Zuordnung &amp;verwenden</translation>
        </message>
        <message>
            <source>Use the names below in place of the tags of the document</source>
            <translation>Die Namen unten anstelle der Tags des Dokuments verwenden</translation>
        </message>
        <message>
            <source>Open &amp;mapping…</source>
            <translation>Ö&amp;ffnen…</translation>
        </message>
        <message>
            <source>Read the names from a file</source>
            <translation>Die Namen aus einer Datei lesen</translation>
        </message>
        <message>
            <source>&amp;Save…</source>
            <translation>&amp;Speichern…</translation>
        </message>
        <message>
            <source>Write the names to a file</source>
            <translation>Die Namen in eine Datei schreiben</translation>
        </message>
        <message>
            <source>Mappings</source>
            <translation>Zuordnungen</translation>
        </message>
        <message>
            <source>The names in place of tags: Insert adds one, Delete removes it</source>
            <translation>Die Namen anstelle von Tags: Einfg fügt einen hinzu, Entf entfernt ihn</translation>
        </message>
        <message>
            <source>XML &amp;tag</source>
            <translation>XML-&amp;Tag</translation>
        </message>
        <message>
            <source>The tag as it stands in the document, without its namespace prefix</source>
            <translation>Das Tag, wie es im Dokument steht, ohne Namensraum-Vorsilbe</translation>
        </message>
        <message>
            <source>Table or column &amp;name</source>
            <translation>Tabellen- oder Spalten&amp;name</translation>
        </message>
        <message>
            <source>The name in place of the tag</source>
            <translation>Der Name anstelle des Tags</translation>
        </message>
        <message>
            <source>&amp;Remove</source>
            <translation>Entfe&amp;rnen</translation>
        </message>
        <message>
            <source>Remove the selected name</source>
            <translation>Den ausgewählten Namen entfernen</translation>
        </message>
        <message>
            <source>Save Mapping</source>
            <translation>Zuordnung sichern</translation>
        </message>
    </context>
    <context>
        <name>velmora::PageModel</name>
        <message>
            <source>Null</source>
            <translation>Null</translation>
        </message>
    </context>
    <context>
        <name>velmora::PreviewWindow</name>
        <message>
            <source>Preview: nothing was written</source>
            <translation>Vorschau: nichts wurde geschrieben</translation>
        </message>
        <message>
            <source>What a run would do</source>
            <translation>Was ein Lauf täte</translation>
        </message>
        <message>
            <source>Sho&amp;w all</source>
            <translation>Alles &amp;zeigen</translation>
        </message>
        <message>
            <source>Show the whole diagram</source>
            <translation>Das ganze Diagramm zeigen</translation>
        </message>
        <message>
            <source>&amp;Copy</source>
            <translation>&amp;Kopieren</translation>
        </message>
        <message>
            <source>Copy the selected lines, or all</source>
            <translation>Die ausgewählten Zeilen kopieren, oder alle</translation>
        </message>
        <message>
            <source>C&amp;lose</source>
            <translation>&amp;Schließen</translation>
        </message>
        <message>
            <source>Close this window</source>
            <translation>Dieses Fenster schließen</translation>
        </message>
    </context>
    <context>
        <name>velmora::ProgressPage</name>
        <message>
            <source>Files</source>
            <translation>Dateien</translation>
        </message>
        <message>
            <source>Records</source>
            <translation>Datensätze</translation>
        </message>
        <message>
            <source>Protocol, newest line first</source>
            <translation>Protokoll, neueste Zeile zuerst</translation>
        </message>
        <message>
            <source>&amp;Protocol (newest first)</source>
            <translation>&amp;Protokoll (Neuestes zuerst)</translation>
        </message>
        <message>
            <source>Cop&amp;y</source>
            <translation>Kopie&amp;ren</translation>
        </message>
        <message>
            <source>Copy the selected lines, or all</source>
            <translation>Die ausgewählten Zeilen oder alle kopieren</translation>
        </message>
        <message>
            <source>Save as…</source>
            <translation>Speichern unter…</translation>
        </message>
        <message>
            <source>Write the protocol to a file</source>
            <translation>Das Protokoll in eine Datei schreiben</translation>
        </message>
        <message>
            <source>&amp;Not imported…</source>
            <translation>&amp;Nicht importiert…</translation>
        </message>
        <message>
            <source>Show what was not imported, and what cures it</source>
            <translation>Zeigen, was nicht importiert wurde und was dagegen hilft</translation>
        </message>
        <message>
            <source>%1 of %2</source>
            <translation>%1 von %2</translation>
        </message>
        <message>
            <source>%1 of about %2</source>
            <translation>%1 von etwa %2</translation>
        </message>
        <message>
            <source>%1 elapsed</source>
            <translation>%1 vergangen</translation>
        </message>
        <message>
            <source>, about %1 left for this file</source>
            <translation>, noch etwa %1 für diese Datei</translation>
        </message>
        <message>
            <source>, %1 read</source>
            <translation>, %1 gelesen</translation>
        </message>
        <message>
            <source>, %1 of %2 read</source>
            <translation>, %1 von %2 gelesen</translation>
        </message>
    </context>
    <context>
        <name>velmora::RunStatusBar</name>
        <message>
            <source>Show what was not imported, and what cures it</source>
            <translation>Zeigen, was nicht importiert wurde und was dagegen hilft</translation>
        </message>
        <message>
            <source>Open the result</source>
            <translation>Ergebnis öffnen</translation>
        </message>
        <message>
            <source>Show what the last conversion has written</source>
            <translation>Zeigen, was die letzte Konvertierung geschrieben hat</translation>
        </message>
        <message>
            <source>Not imported: %1…</source>
            <translation>Nicht importiert: %1…</translation>
        </message>
    </context>
    <context>
        <name>velmora::StructurePage</name>
        <message>
            <source>The structure goes on: it is too long to be shown.</source>
            <translation>Die Struktur geht weiter: sie ist zu lang, um ganz gezeigt zu werden.</translation>
        </message>
        <message>
            <source>Structure of the document converted last</source>
            <translation>Struktur des zuletzt konvertierten Dokuments</translation>
        </message>
        <message>
            <source>After a conversion, the structure of the document stands here.</source>
            <translation>Nach einer Konvertierung steht hier die Struktur des Dokuments.</translation>
        </message>
        <message>
            <source>Find</source>
            <translation>Suchen</translation>
        </message>
        <message>
            <source>Return finds the next place</source>
            <translation>Die Eingabetaste sucht die nächste Stelle</translation>
        </message>
        <message>
            <source>&amp;Find</source>
            <translation>&amp;Suchen</translation>
        </message>
        <message>
            <source>Find the next place</source>
            <translation>Die nächste Stelle suchen</translation>
        </message>
        <message>
            <source>Cop&amp;y</source>
            <translation>Kopie&amp;ren</translation>
        </message>
        <message>
            <source>Copy the selected lines, or all</source>
            <translation>Die ausgewählten Zeilen oder alle kopieren</translation>
        </message>
        <message>
            <source>Save as…</source>
            <translation>Speichern unter…</translation>
        </message>
        <message>
            <source>Write the description to a file</source>
            <translation>Die Beschreibung in eine Datei schreiben</translation>
        </message>
    </context>
</TS>
