<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>DesktopWorker</name>
    <message>
        <source>Show</source>
        <translation>Zeigen</translation>
    </message>
    <message>
        <source>Films are being downloaded</source>
        <translation>Filme werden geladen</translation>
    </message>
</context>
<context>
    <name>Sentence</name>
    <message>
        <source>The ticket is empty.</source>
        <translation>Das Ticket ist leer.</translation>
    </message>
    <message>
        <source>A ticket begins with the line TixVeskVersion=1.0.</source>
        <translation>Ein Ticket beginnt mit der Zeile TixVeskVersion=1.0.</translation>
    </message>
    <message>
        <source>This ticket&apos;s version is {version}; only version 1.0 is known.</source>
        <translation>Dieses Ticket hat die Version {version}; bekannt ist nur Version 1.0.</translation>
    </message>
    <message>
        <source>There is no line &quot;start&quot;, so the ticket names no film.</source>
        <translation>Die Zeile „start“ fehlt, daher nennt das Ticket keinen Film.</translation>
    </message>
    <message>
        <source>This film has no line &quot;url=&quot;, so it cannot be fetched.</source>
        <translation>Diesem Film fehlt die Zeile „url=“, daher kann er nicht geladen werden.</translation>
    </message>
    <message>
        <source>This film has no line &quot;end&quot;.</source>
        <translation>Diesem Film fehlt die Zeile „end“.</translation>
    </message>
    <message>
        <source>This film has no line &quot;end&quot; before the next &quot;start&quot;.</source>
        <translation>Diesem Film fehlt die Zeile „end“ vor dem nächsten „start“.</translation>
    </message>
    <message>
        <source>There is an &quot;end&quot; without a &quot;start&quot;.</source>
        <translation>Es gibt ein „end“ ohne „start“.</translation>
    </message>
    <message>
        <source>The rest of this ticket is not listed.</source>
        <translation>Der Rest dieses Tickets wird nicht aufgeführt.</translation>
    </message>
    <message>
        <source>The online services name no film for this protected ticket.</source>
        <translation>Die Online-Dienste nennen zu diesem geschützten Ticket keinen Film.</translation>
    </message>
    <message>
        <source>This is an address, not a ticket file.</source>
        <translation>Das ist eine Adresse, keine Ticket-Datei.</translation>
    </message>
    <message>
        <source>The online services answered with status {status}.</source>
        <translation>Die Online-Dienste haben mit Status {status} geantwortet.</translation>
    </message>
    <message>
        <source>The online services gave no proper answer; check their address (--services), or try again later.</source>
        <translation>Die Online-Dienste haben keine brauchbare Antwort gegeben; ihre Adresse (--services) prüfen oder es später noch einmal versuchen.</translation>
    </message>
    <message>
        <source>The address of the online services (--services) does not begin with http:// or https://.</source>
        <translation>Die Adresse der Online-Dienste (--services) beginnt nicht mit http:// oder https://.</translation>
    </message>
    <message>
        <source>The online services cannot be reached ({words}); check their address (--services), or try again later.</source>
        <translation>Die Online-Dienste sind nicht erreichbar ({words}); ihre Adresse (--services) prüfen oder es später noch einmal versuchen.</translation>
    </message>
    <message>
        <source>The player ended before the online services answered; try again.</source>
        <translation>Der Player wurde beendet, bevor die Online-Dienste geantwortet haben; versuche es noch einmal.</translation>
    </message>
    <message>
        <source>There is too little memory to ask the online services.</source>
        <translation>Der Speicher reicht nicht, um die Online-Dienste zu fragen.</translation>
    </message>
    <message>
        <source>The online services cannot read this ticket.</source>
        <translation>Die Online-Dienste können dieses Ticket nicht lesen.</translation>
    </message>
    <message>
        <source>The online services refuse this download.</source>
        <translation>Die Online-Dienste verweigern diesen Download.</translation>
    </message>
    <message>
        <source>The online services gave no proper answer.</source>
        <translation>Die Online-Dienste haben keine brauchbare Antwort gegeben.</translation>
    </message>
    <message>
        <source>The online services gave an incomplete answer.</source>
        <translation>Die Online-Dienste haben eine unvollständige Antwort gegeben.</translation>
    </message>
    <message>
        <source>error {number}</source>
        <translation>Fehler {number}</translation>
    </message>
    <message>
        <source>error {number}: {words}</source>
        <translation>Fehler {number}: {words}</translation>
    </message>
    <message>
        <source>{needed} needed, {free} free</source>
        <translation>{needed} nötig, {free} frei</translation>
    </message>
    <message>
        <source>{needed} needed</source>
        <translation>{needed} nötig</translation>
    </message>
    <message>
        <source>{free} free</source>
        <translation>{free} frei</translation>
    </message>
    <message>
        <source>{title} lies at {place}, in the present media folder.</source>
        <translation>{title} liegt unter {place}, im jetzigen Ordner für Filme.</translation>
    </message>
    <message>
        <source>{title} is not there any more.</source>
        <translation>{title} ist nicht mehr da.</translation>
    </message>
    <message>
        <source>{title} has {size} bytes although its server had announced {announced}; should it end early, remove it and get it again.</source>
        <translation>{title} hat {size} Bytes, obwohl der Server {announced} angekündigt hatte; falls der Film zu früh endet, ihn entfernen und noch einmal laden.</translation>
    </message>
    <message>
        <source>{title} has {size} although its server had announced {announced}; should it end early, remove it and get it again.</source>
        <translation>{title} hat {size}, obwohl der Server {announced} angekündigt hatte; falls der Film zu früh endet, ihn entfernen und noch einmal laden.</translation>
    </message>
    <message>
        <source>{title} has {size} bytes although its server had announced {announced}; it is kept as it came.</source>
        <translation>{title} hat {size} Bytes, obwohl der Server {announced} angekündigt hatte; der Film bleibt, wie er gekommen ist.</translation>
    </message>
    <message>
        <source>{title} has {size} although its server had announced {announced}; it is kept as it came.</source>
        <translation>{title} hat {size}, obwohl der Server {announced} angekündigt hatte; der Film bleibt, wie er gekommen ist.</translation>
    </message>
    <message>
        <source>No player could be started for {title}.</source>
        <translation>Für {title} konnte kein Abspielprogramm gestartet werden.</translation>
    </message>
    <message>
        <source>The item could not be removed.</source>
        <translation>Der Film konnte nicht entfernt werden.</translation>
    </message>
    <message>
        <source>Only a failed item can be retried; this one is {state}.</source>
        <translation>Nur ein fehlgeschlagener Film kann noch einmal versucht werden; dieser ist {state}.</translation>
    </message>
    <message>
        <source>Only what waits or arrives can be paused; this one is {state}.</source>
        <translation>Nur was wartet oder gerade kommt, kann angehalten werden; dieser Film ist {state}.</translation>
    </message>
    <message>
        <source>Only a paused item can be resumed; this one is {state}.</source>
        <translation>Nur ein angehaltener Film kann fortgesetzt werden; dieser ist {state}.</translation>
    </message>
    <message>
        <source>paused</source>
        <translation>angehalten</translation>
    </message>
    <message>
        <source>queued</source>
        <translation>eingereiht</translation>
    </message>
    <message>
        <source>starting</source>
        <translation>beim Verbinden</translation>
    </message>
    <message>
        <source>downloading</source>
        <translation>beim Laden</translation>
    </message>
    <message>
        <source>completed</source>
        <translation>fertig</translation>
    </message>
    <message>
        <source>stopped</source>
        <translation>gestoppt</translation>
    </message>
    <message>
        <source>failed</source>
        <translation>fehlgeschlagen</translation>
    </message>
    <message>
        <source>held</source>
        <translation>zurückgehalten</translation>
    </message>
    <message>
        <source>A failed item cannot be moved before it is tried again.</source>
        <translation>Ein gescheiterter Eintrag kann erst verschoben werden, wenn er noch einmal versucht wird.</translation>
    </message>
    <message>
        <source>The item cannot move any further.</source>
        <translation>Der Film lässt sich nicht weiter verschieben.</translation>
    </message>
    <message>
        <source>The item cannot move that far.</source>
        <translation>Der Film lässt sich nicht so weit verschieben.</translation>
    </message>
    <message>
        <source>The request was not understood.</source>
        <translation>Die Anfrage wurde nicht verstanden.</translation>
    </message>
    <message>
        <source>The queue could not be read; it was set aside as {place}.</source>
        <translation>Die Warteschlange konnte nicht gelesen werden; sie liegt jetzt beiseite als {place}.</translation>
    </message>
    <message>
        <source>The queue file {place} is {words}; nothing was changed. Move it away, or choose another folder with --data.</source>
        <translation>Die Datei der Warteschlange {place} ist {words}; nichts wurde geändert. Sie wegräumen oder mit --data einen anderen Ordner wählen.</translation>
    </message>
    <message>
        <source>a folder</source>
        <translation>ein Ordner</translation>
    </message>
    <message>
        <source>not a file but a pipe or a device</source>
        <translation>keine Datei, sondern eine Pipe oder ein Gerät</translation>
    </message>
    <message>
        <source>a link that leads nowhere</source>
        <translation>ein Verweis, der ins Leere führt</translation>
    </message>
    <message>
        <source>The queue file {place} cannot be read ({words}); nothing was changed. Try again, make it readable, or choose another folder with --data.</source>
        <translation>Die Datei der Warteschlange {place} kann nicht gelesen werden ({words}); nichts wurde geändert. Es noch einmal versuchen, sie lesbar machen oder mit --data einen anderen Ordner wählen.</translation>
    </message>
    <message>
        <source>What belongs into {place} is forgotten at the end of this run: it is {words}. Move that away.</source>
        <translation>Was in {place} gehört, ist am Ende dieses Laufs vergessen: Das ist {words}. Es wegräumen.</translation>
    </message>
    <message>
        <source>The queue file {place} could not be read a moment ago; nothing was changed. Try again.</source>
        <translation>Die Datei der Warteschlange {place} konnte eben nicht gelesen werden; nichts wurde geändert. Es noch einmal versuchen.</translation>
    </message>
    <message>
        <source>The queue file {place} cannot be written ({words}); free some space or make it writable, or choose another folder with --data.</source>
        <translation>Die Datei der Warteschlange {place} kann nicht geschrieben werden ({words}); Platz schaffen, sie schreibbar machen oder mit --data einen anderen Ordner wählen.</translation>
    </message>
    <message>
        <source>writing failed</source>
        <translation>das Schreiben ist fehlgeschlagen</translation>
    </message>
    <message>
        <source>The data folder {place} cannot be written ({words}); choose another with --data.</source>
        <translation>Der Datenordner {place} kann nicht geschrieben werden ({words}); mit --data einen anderen wählen.</translation>
    </message>
    <message>
        <source>Only {files} files may be open at once, and {needed} are needed; raise the limit (ulimit -n) and try again.</source>
        <translation>Nur {files} Dateien dürfen gleichzeitig offen sein, nötig sind {needed}; die Grenze anheben (ulimit -n) und es noch einmal versuchen.</translation>
    </message>
    <message>
        <source>The system lets no more threads be started; end other programs or raise the limit (ulimit -u), and try again.</source>
        <translation>Das System lässt keine weiteren Threads zu; andere Programme beenden oder die Grenze anheben (ulimit -u) und es noch einmal versuchen.</translation>
    </message>
    <message>
        <source>Another player is using the data folder {place}; close it, or choose another folder with --data.</source>
        <translation>Ein anderer Player benutzt den Datenordner {place}; ihn schließen oder mit --data einen anderen Ordner wählen.</translation>
    </message>
    <message>
        <source>The player that held the queue has ended.</source>
        <translation>Der Player, der die Warteschlange hatte, ist beendet.</translation>
    </message>
    <message>
        <source>The player that holds the queue talks with as many others as it can; try again later.</source>
        <translation>Der Player, der die Warteschlange hat, spricht schon mit so vielen anderen, wie er kann; es später noch einmal versuchen.</translation>
    </message>
    <message>
        <source>This is more than the player that holds the queue takes at once; give fewer addresses at a time.</source>
        <translation>Das ist mehr, als der Player, der die Warteschlange hat, auf einmal annimmt; weniger Adressen angeben.</translation>
    </message>
    <message>
        <source>What the player that holds the queue says is not understood; close it, then try again.</source>
        <translation>Was der Player sagt, der die Warteschlange hat, ist nicht zu verstehen; ihn schließen und es noch einmal versuchen.</translation>
    </message>
    <message>
        <source>The player that holds the queue does not answer; it may be stopped: continue or close it.</source>
        <translation>Der Player, der die Warteschlange hat, antwortet nicht; vielleicht ist er angehalten: ihn fortsetzen oder schließen.</translation>
    </message>
    <message>
        <source>The queue is held by another version of the player ({version}, process {number}); close it, or use that version.</source>
        <translation>Eine andere Version des Players hat die Warteschlange ({version}, Prozess {number}); sie schließen oder jene Version benutzen.</translation>
    </message>
    <message>
        <source>{words} Other players cannot reach this queue.</source>
        <translation>{words} Andere Player erreichen diese Warteschlange nicht.</translation>
    </message>
    <message>
        <source>There is no place for the socket of the queue.</source>
        <translation>Für den Socket der Warteschlange gibt es keinen Platz.</translation>
    </message>
    <message>
        <source>No thread can be started for the socket of the queue.</source>
        <translation>Für den Socket der Warteschlange kann kein Thread gestartet werden.</translation>
    </message>
    <message>
        <source>The socket {place} cannot be opened ({words}).</source>
        <translation>Der Socket {place} kann nicht geöffnet werden ({words}).</translation>
    </message>
    <message>
        <source>a folder lies there</source>
        <translation>dort liegt ein Ordner</translation>
    </message>
    <message>
        <source>The download manager cannot be loaded from {place}.</source>
        <translation>Der Download-Manager kann nicht aus {place} geladen werden.</translation>
    </message>
    <message>
        <source>It cannot be read: {words}.</source>
        <translation>Sie kann nicht gelesen werden: {words}.</translation>
    </message>
    <message>
        <source>It is too large for a description.</source>
        <translation>Sie ist zu groß für eine Beschreibung.</translation>
    </message>
    <message>
        <source>It has no &quot;id&quot;.</source>
        <translation>Ihr fehlt „id“.</translation>
    </message>
    <message>
        <source>Its &quot;version&quot; is not made of numbers joined by dots.</source>
        <translation>Ihre „version“ besteht nicht aus Zahlen mit Punkten dazwischen.</translation>
    </message>
    <message>
        <source>Its &quot;interfaces&quot; are not a list of texts.</source>
        <translation>Ihre „interfaces“ sind keine Liste von Texten.</translation>
    </message>
    <message>
        <source>It has no &quot;library&quot;.</source>
        <translation>Ihr fehlt „library“.</translation>
    </message>
    <message>
        <source>It is not JSON: {words} at byte {number}.</source>
        <translation>Sie ist kein JSON: {words} bei Byte {number}.</translation>
    </message>
    <message>
        <source>It is not a JSON object.</source>
        <translation>Sie ist kein JSON-Objekt.</translation>
    </message>
    <message>
        <source>The download manager cannot be loaded from {place}. {words}</source>
        <translation>Der Download-Manager kann nicht aus {place} geladen werden. {words}</translation>
    </message>
    <message>
        <source>Plug-in description {place}: {words}</source>
        <translation>Plug-in-Beschreibung {place}: {words}</translation>
    </message>
    <message>
        <source>Plug-in {name}: It cannot be loaded: {words}.</source>
        <translation>Plug-in {name}: Es kann nicht geladen werden: {words}.</translation>
    </message>
    <message>
        <source>unknown reason</source>
        <translation>unbekannter Grund</translation>
    </message>
    <message>
        <source>Plug-in {name}: Its getPlugin made no plug-in (result {number}).</source>
        <translation>Plug-in {name}: Sein getPlugin hat kein Plug-in erzeugt (Ergebnis {number}).</translation>
    </message>
    <message>
        <source>Plug-in {name}: Its getPlugin failed: {words}.</source>
        <translation>Plug-in {name}: Sein getPlugin ist gescheitert: {words}.</translation>
    </message>
    <message>
        <source>Plug-in {name}: Its getPlugin failed.</source>
        <translation>Plug-in {name}: Sein getPlugin ist gescheitert.</translation>
    </message>
    <message>
        <source>Removed: {title}; its film {place} could not be deleted ({words}).</source>
        <translation>Entfernt: {title}; der Film {place} konnte nicht gelöscht werden ({words}).</translation>
    </message>
</context>
<context>
    <name>Verb</name>
    <message>
        <source>&amp;Add addresses…</source>
        <translation>&amp;Adressen hinzufügen …</translation>
    </message>
    <message>
        <source>Add &amp;tickets…</source>
        <translation>&amp;Tickets hinzufügen …</translation>
    </message>
    <message>
        <source>Add from the &amp;clipboard</source>
        <translation>Aus der &amp;Zwischenablage hinzufügen</translation>
    </message>
    <message>
        <source>&amp;Pause all</source>
        <translation>Alle an&amp;halten</translation>
    </message>
    <message>
        <source>&amp;Go on with all</source>
        <translation>Alle &amp;fortsetzen</translation>
    </message>
    <message>
        <source>&amp;Play</source>
        <translation>Ab&amp;spielen</translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation>S&amp;toppen</translation>
    </message>
    <message>
        <source>&amp;Go on</source>
        <translation>&amp;Fortsetzen</translation>
    </message>
    <message>
        <source>&amp;Try again</source>
        <translation>Noch ein&amp;mal versuchen</translation>
    </message>
    <message>
        <source>Try all &amp;failed again</source>
        <translation>Alle &amp;gescheiterten noch einmal versuchen</translation>
    </message>
    <message>
        <source>C&amp;hoose another folder…</source>
        <translation>Anderen &amp;Ordner wählen …</translation>
    </message>
    <message>
        <source>Show in &amp;folder</source>
        <translation>&amp;Im Ordner zeigen</translation>
    </message>
    <message>
        <source>&amp;Copy address</source>
        <translation>&amp;Adresse kopieren</translation>
    </message>
    <message>
        <source>Copy &amp;details</source>
        <translation>Ein&amp;zelheiten kopieren</translation>
    </message>
    <message>
        <source>&amp;Remove</source>
        <translation>&amp;Entfernen</translation>
    </message>
    <message>
        <source>Remove and d&amp;elete the film…</source>
        <translation>Entfernen und Film &amp;löschen …</translation>
    </message>
    <message>
        <source>Clear &amp;done films</source>
        <translation>F&amp;ertige Filme entfernen</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Rückgängig</translation>
    </message>
    <message>
        <source>Move &amp;up</source>
        <translation>Nac&amp;h oben</translation>
    </message>
    <message>
        <source>Move do&amp;wn</source>
        <translation>Nach &amp;unten</translation>
    </message>
    <message>
        <source>Move to the t&amp;op</source>
        <translation>Ganz &amp;nach oben</translation>
    </message>
    <message>
        <source>Move to the &amp;bottom</source>
        <translation>&amp;Ganz nach unten</translation>
    </message>
    <message>
        <source>Select &amp;all</source>
        <translation>Alle aus&amp;wählen</translation>
    </message>
    <message>
        <source>&amp;Filter</source>
        <translation>&amp;Filtern</translation>
    </message>
    <message>
        <source>&amp;Downloads</source>
        <translation>&amp;Downloads</translation>
    </message>
    <message>
        <source>&amp;Watching</source>
        <translation>&amp;Ansehen</translation>
    </message>
    <message>
        <source>F&amp;ull screen</source>
        <translation>&amp;Vollbild</translation>
    </message>
    <message>
        <source>&amp;Preferences…</source>
        <translation>&amp;Einstellungen …</translation>
    </message>
    <message>
        <source>&amp;About this player</source>
        <translation>&amp;Über diesen Player</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
</context>
<context>
    <name>playerx::window::ActionSet</name>
    <message>
        <source>%1
%2</source>
        <extracomment>Tool tip of an action that cannot be done: its name, then the reason.</extracomment>
        <translation>%1
%2</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <extracomment>Tool tip of an action: its name, then its keys.</extracomment>
        <translation>%1 (%2)</translation>
    </message>
</context>
<context>
    <name>playerx::window::AddAddressesDialog</name>
    <message numerus="yes">
        <source>%n address(es) or ticket(s) found.</source>
        <translation>
            <numerusform>%n Adresse oder Ticket gefunden.</numerusform>
            <numerusform>%n Adressen oder Tickets gefunden.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n line(s) left out, such as “%1”.</source>
        <translation>
            <numerusform>%n Zeile ausgelassen, nämlich „%1“.</numerusform>
            <numerusform>%n Zeilen ausgelassen, zum Beispiel „%1“.</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 %2</source>
        <extracomment>Two sentences, complete in themselves.</extracomment>
        <translation>%1 %2</translation>
    </message>
    <message>
        <source>Add addresses</source>
        <translation>Adressen hinzufügen</translation>
    </message>
    <message>
        <source>&amp;Addresses of films, one on each line:</source>
        <translation>&amp;Adressen von Filmen, eine je Zeile:</translation>
    </message>
    <message>
        <source>Addresses of films</source>
        <translation>Adressen von Filmen</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>Hinzufügen</translation>
    </message>
</context>
<context>
    <name>playerx::window::ControlBar</name>
    <message>
        <source>%1 of %2</source>
        <extracomment>The place in a film, and its length.</extracomment>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Abspielen</translation>
    </message>
    <message>
        <source>Mute</source>
        <translation>Stummschalten</translation>
    </message>
    <message>
        <source>Sound</source>
        <translation>Ton</translation>
    </message>
    <message>
        <source>Subtitles</source>
        <translation>Untertitel</translation>
    </message>
    <message>
        <source>Full screen</source>
        <translation>Vollbild</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Lautstärke</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Anhalten</translation>
    </message>
    <message>
        <source>Unmute</source>
        <translation>Ton einschalten</translation>
    </message>
    <message>
        <source>Leave full screen</source>
        <translation>Vollbild verlassen</translation>
    </message>
    <message>
        <source>Off</source>
        <translation>Aus</translation>
    </message>
    <message>
        <source>Back to the list</source>
        <translation>Zurück zur Liste</translation>
    </message>
</context>
<context>
    <name>playerx::window::DesktopNews</name>
    <message>
        <source>“%1” is done.</source>
        <translation>„%1“ ist fertig.</translation>
    </message>
    <message numerus="yes">
        <source>%n film(s) are done.</source>
        <translation>
            <numerusform>%n Film ist fertig.</numerusform>
            <numerusform>%n Filme sind fertig.</numerusform>
        </translation>
    </message>
    <message>
        <source>“%1” has failed.</source>
        <translation>„%1“ ist gescheitert.</translation>
    </message>
    <message numerus="yes">
        <source>%n film(s) have failed.</source>
        <translation>
            <numerusform>%n Film ist gescheitert.</numerusform>
            <numerusform>%n Filme sind gescheitert.</numerusform>
        </translation>
    </message>
    <message>
        <source>Downloads</source>
        <translation>Downloads</translation>
    </message>
</context>
<context>
    <name>playerx::window::EmptyState</name>
    <message>
        <source>No film fits the filter</source>
        <translation>Kein Film passt zum Filter</translation>
    </message>
    <message>
        <source>Nothing to download yet</source>
        <translation>Noch nichts zu laden</translation>
    </message>
    <message>
        <source>Other films are in the list, but not shown.</source>
        <translation>In der Liste sind andere Filme, die nicht gezeigt werden.</translation>
    </message>
    <message>
        <source>Paste an address, or drop a link or a ticket here</source>
        <translation>Eine Adresse einfügen, oder einen Link oder ein Ticket hierher ziehen</translation>
    </message>
    <message>
        <source>Show all films</source>
        <translation>Alle Filme zeigen</translation>
    </message>
    <message>
        <source>Add addresses…</source>
        <translation>Adressen hinzufügen …</translation>
    </message>
</context>
<context>
    <name>playerx::window::FilmCommands</name>
    <message>
        <source>Films can be moved when the list is not filtered.</source>
        <translation>Filme lassen sich verschieben, wenn die Liste nicht gefiltert ist.</translation>
    </message>
    <message numerus="yes">
        <source>%n film(s) were in the list already.</source>
        <translation>
            <numerusform>%n Film war schon in der Liste.</numerusform>
            <numerusform>%n Filme waren schon in der Liste.</numerusform>
        </translation>
    </message>
    <message>
        <source>Not added: %1 — %2</source>
        <extracomment>%1 is an address or a path, %2 a sentence with the reason.</extracomment>
        <translation>Nicht hinzugefügt: %1 – %2</translation>
    </message>
    <message numerus="yes">
        <source>%n input(s) were not added. The first one: %1 — %2</source>
        <translation>
            <numerusform>%n Eingabe wurde nicht hinzugefügt: %1 – %2</numerusform>
            <numerusform>%n Eingaben wurden nicht hinzugefügt. Die erste: %1 – %2</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n address(es) or ticket(s) are still to be added.</source>
        <translation>
            <numerusform>%n Adresse oder Ticket ist noch hinzuzufügen.</numerusform>
            <numerusform>%n Adressen oder Tickets sind noch hinzuzufügen.</numerusform>
        </translation>
    </message>
    <message>
        <source>Copy it</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Copy them</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Line %1: %2</source>
        <extracomment>Of a ticket; %1 is a number, %2 a sentence.</extracomment>
        <translation>Zeile %1: %2</translation>
    </message>
    <message numerus="yes">
        <source>The ticket %1 names %n film(s), but something in it cannot be used. %2</source>
        <translation>
            <numerusform>Das Ticket %1 nennt %n Film, aber etwas darin ist nicht zu gebrauchen. %2</numerusform>
            <numerusform>Das Ticket %1 nennt %n Filme, aber etwas darin ist nicht zu gebrauchen. %2</numerusform>
        </translation>
    </message>
    <message>
        <source>Add anyway</source>
        <translation>Trotzdem hinzufügen</translation>
    </message>
    <message numerus="yes">
        <source>%n film(s) removed.</source>
        <translation>
            <numerusform>%n Film entfernt.</numerusform>
            <numerusform>%n Filme entfernt.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>playerx::window::FilmText</name>
    <message>
        <source>%1 · %2</source>
        <extracomment>Puts two facts side by side; %1 and %2 are complete in themselves.</extracomment>
        <translation>%1 · %2</translation>
    </message>
    <message>
        <source>time left unknown</source>
        <translation>Restzeit unbekannt</translation>
    </message>
    <message>
        <source>%1 left</source>
        <translation>noch %1</translation>
    </message>
    <message>
        <source>Film without a title</source>
        <translation>Film ohne Titel</translation>
    </message>
    <message>
        <source>Waiting</source>
        <translation>Wartet</translation>
    </message>
    <message>
        <source>Connecting</source>
        <translation>Verbindet</translation>
    </message>
    <message>
        <source>Downloading</source>
        <translation>Lädt</translation>
    </message>
    <message>
        <source>Paused</source>
        <translation>Angehalten</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <source>Failed</source>
        <translation>Gescheitert</translation>
    </message>
    <message>
        <source>Stopped</source>
        <translation>Gestoppt</translation>
    </message>
    <message>
        <source>Held</source>
        <translation>In Arbeit</translation>
    </message>
    <message>
        <source>Looking for the reason…</source>
        <translation>Der Grund wird gesucht …</translation>
    </message>
    <message>
        <source>%1, %2: %3</source>
        <translation>%1, %2: %3</translation>
    </message>
    <message>
        <source>%1, %2</source>
        <translation>%1, %2</translation>
    </message>
    <message>
        <source>%1, %2, %3 percent</source>
        <extracomment>For a screen reader: title, state, percent.</extracomment>
        <translation>%1, %2, %3 Prozent</translation>
    </message>
    <message>
        <source>Code: %1</source>
        <translation>Code: %1</translation>
    </message>
</context>
<context>
    <name>playerx::window::FilmView</name>
    <message>
        <source>Downloads</source>
        <translation>Downloads</translation>
    </message>
</context>
<context>
    <name>playerx::window::FilterBar</name>
    <message>
        <source>All</source>
        <translation>Alle</translation>
    </message>
    <message>
        <source>Unfinished</source>
        <translation>Unfertige</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <source>Failed</source>
        <translation>Gescheitert</translation>
    </message>
    <message>
        <source>Which films to show</source>
        <translation>Welche Filme gezeigt werden</translation>
    </message>
    <message>
        <source>Filter</source>
        <translation>Filtern</translation>
    </message>
</context>
<context>
    <name>playerx::window::Menus</name>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Queue</source>
        <translation>&amp;Warteschlange</translation>
    </message>
    <message>
        <source>Fi&amp;lm</source>
        <translation>&amp;Film</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
</context>
<context>
    <name>playerx::window::MessageStrip</name>
    <message>
        <source>Number</source>
        <translation>Nummer</translation>
    </message>
    <message>
        <source>Close the message</source>
        <translation>Meldung schließen</translation>
    </message>
    <message numerus="yes">
        <source>%n more</source>
        <translation>
            <numerusform>%n weitere</numerusform>
            <numerusform>%n weitere</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>playerx::window::MiniPlayer</name>
    <message>
        <source>Pause</source>
        <translation>Anhalten</translation>
    </message>
    <message>
        <source>Back to the picture</source>
        <translation>Zurück zum Bild</translation>
    </message>
    <message>
        <source>Close the film</source>
        <translation>Film schließen</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Abspielen</translation>
    </message>
</context>
<context>
    <name>playerx::window::MpvFilmPlayer</name>
    <message>
        <source>The film cannot be read: %1.</source>
        <extracomment>%1 is what the system says, such as &quot;No such file or directory&quot;.</extracomment>
        <translation>Der Film lässt sich nicht lesen: %1.</translation>
    </message>
    <message>
        <source>This file is a list of other files, not a film.</source>
        <translation>Diese Datei ist eine Liste anderer Dateien, kein Film.</translation>
    </message>
    <message>
        <source>This film can be shown when all of it has arrived.</source>
        <translation>Dieser Film lässt sich zeigen, wenn er ganz angekommen ist.</translation>
    </message>
    <message>
        <source>This file is no film that can be shown.</source>
        <translation>Diese Datei ist kein Film, der sich zeigen lässt.</translation>
    </message>
    <message>
        <source>The film cannot be fetched from its address.</source>
        <translation>Der Film lässt sich nicht von seiner Adresse holen.</translation>
    </message>
</context>
<context>
    <name>playerx::window::Numbers</name>
    <message>
        <source>%1 B</source>
        <translation>%1 B</translation>
    </message>
    <message>
        <source>%1 kB</source>
        <translation>%1 kB</translation>
    </message>
    <message>
        <source>%1 MB</source>
        <translation>%1 MB</translation>
    </message>
    <message>
        <source>%1 GB</source>
        <translation>%1 GB</translation>
    </message>
    <message>
        <source>%1 TB</source>
        <translation>%1 TB</translation>
    </message>
    <message>
        <source>%1 PB</source>
        <translation>%1 PB</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <extracomment>Bytes that have arrived, of all bytes: &quot;294 of 700 MB&quot;. %2 carries the unit.</extracomment>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>%1/s</source>
        <extracomment>A speed; %1 is a size, such as &quot;5.2 MB&quot;.</extracomment>
        <translation>%1/s</translation>
    </message>
    <message>
        <source>%1 d %2 h</source>
        <translation>%1 Tg. %2 h</translation>
    </message>
    <message>
        <source>%1 h %2 min</source>
        <translation>%1 h %2 min</translation>
    </message>
    <message>
        <source>%1 min %2 s</source>
        <translation>%1 min %2 s</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>%1 min</source>
        <translation>%1 min</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>today</source>
        <translation>heute</translation>
    </message>
    <message>
        <source>yesterday</source>
        <translation>gestern</translation>
    </message>
</context>
<context>
    <name>playerx::window::Obstacle</name>
    <message>
        <source>Choose a film first.</source>
        <translation>Zuerst einen Film auswählen.</translation>
    </message>
    <message>
        <source>Done and failed films stay at the bottom.</source>
        <translation>Fertige und gescheiterte Filme bleiben unten.</translation>
    </message>
    <message>
        <source>Films can be moved when the list is not filtered.</source>
        <translation>Filme lassen sich verschieben, wenn die Liste nicht gefiltert ist.</translation>
    </message>
    <message>
        <source>The clipboard holds no address and no ticket.</source>
        <translation>Die Zwischenablage enthält keine Adresse und kein Ticket.</translation>
    </message>
    <message>
        <source>The queue is paused.</source>
        <translation>Die Warteschlange ist angehalten.</translation>
    </message>
    <message>
        <source>Nothing is left to download.</source>
        <translation>Es ist nichts mehr zu laden.</translation>
    </message>
    <message>
        <source>The queue is not paused.</source>
        <translation>Die Warteschlange ist nicht angehalten.</translation>
    </message>
    <message>
        <source>Choose a single film.</source>
        <translation>Einen einzelnen Film auswählen.</translation>
    </message>
    <message>
        <source>Too little of this film has arrived.</source>
        <translation>Von diesem Film ist noch zu wenig da.</translation>
    </message>
    <message>
        <source>No chosen film is waiting or downloading.</source>
        <translation>Keiner der gewählten Filme wartet oder lädt.</translation>
    </message>
    <message>
        <source>No chosen film is stopped.</source>
        <translation>Keiner der gewählten Filme ist gestoppt.</translation>
    </message>
    <message>
        <source>No chosen film has failed.</source>
        <translation>Keiner der gewählten Filme ist gescheitert.</translation>
    </message>
    <message>
        <source>No film has failed.</source>
        <translation>Kein Film ist gescheitert.</translation>
    </message>
    <message>
        <source>No chosen film is done.</source>
        <translation>Keiner der gewählten Filme ist fertig.</translation>
    </message>
    <message>
        <source>The chosen film has no address yet.</source>
        <translation>Der gewählte Film hat noch keine Adresse.</translation>
    </message>
    <message>
        <source>No film is done.</source>
        <translation>Kein Film ist fertig.</translation>
    </message>
    <message>
        <source>There is nothing to undo.</source>
        <translation>Es gibt nichts rückgängig zu machen.</translation>
    </message>
    <message>
        <source>The film is at the top.</source>
        <translation>Der Film ist ganz oben.</translation>
    </message>
    <message>
        <source>The film is at the bottom.</source>
        <translation>Der Film ist ganz unten.</translation>
    </message>
    <message>
        <source>The list is empty.</source>
        <translation>Die Liste ist leer.</translation>
    </message>
</context>
<context>
    <name>playerx::window::PreferencesDialog</name>
    <message>
        <source>Give the whole path of the folder for films, from / on.</source>
        <translation>Den Ordner für Filme mit seinem ganzen Pfad angeben.</translation>
    </message>
    <message>
        <source>Name the proxy as http://host:port.</source>
        <translation>Den Proxy als http://host:port angeben.</translation>
    </message>
    <message>
        <source>The address of the online services begins with https://.</source>
        <translation>Die Adresse der Online-Dienste beginnt mit https://.</translation>
    </message>
    <message>
        <source>&amp;Limit the speed to</source>
        <translation>Geschwindigkeit &amp;begrenzen auf</translation>
    </message>
    <message>
        <source>&amp;Play a film as soon as enough of it is there</source>
        <translation>Filme a&amp;bspielen, sobald genug davon da ist</translation>
    </message>
    <message>
        <source>Tell when a film is &amp;done</source>
        <translation>Melden, wenn ein Film &amp;fertig ist</translation>
    </message>
    <message>
        <source>Tell when a film has &amp;failed</source>
        <translation>Melden, wenn ein Film &amp;gescheitert ist</translation>
    </message>
    <message>
        <source>Preferences</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>D&amp;ownloads</source>
        <translation>D&amp;ownloads</translation>
    </message>
    <message>
        <source>&amp;Network</source>
        <translation>&amp;Netz</translation>
    </message>
    <message>
        <source>&amp;Window</source>
        <translation>Fen&amp;ster</translation>
    </message>
    <message>
        <source>&amp;Choose…</source>
        <translation>&amp;Wählen …</translation>
    </message>
    <message>
        <source>&amp;Folder for films:</source>
        <translation>&amp;Ordner für Filme:</translation>
    </message>
    <message>
        <source>Folder for films</source>
        <translation>Ordner für Filme</translation>
    </message>
    <message>
        <source> kB/s</source>
        <translation> kB/s</translation>
    </message>
    <message>
        <source>Highest speed</source>
        <translation>Höchste Geschwindigkeit</translation>
    </message>
    <message>
        <source>As the system says</source>
        <translation>Wie das System</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Keiner</translation>
    </message>
    <message>
        <source>This one:</source>
        <translation>Dieser:</translation>
    </message>
    <message>
        <source>Address of the proxy</source>
        <translation>Adresse des Proxys</translation>
    </message>
    <message>
        <source>&amp;Proxy:</source>
        <translation>&amp;Proxy:</translation>
    </message>
    <message>
        <source>C&amp;hoose…</source>
        <translation>W&amp;ählen …</translation>
    </message>
    <message>
        <source>Those of the system</source>
        <translation>Die des Systems</translation>
    </message>
    <message>
        <source>Certificate authorities</source>
        <translation>Zertifizierungsstellen</translation>
    </message>
    <message>
        <source>Certificate &amp;authorities:</source>
        <translation>&amp;Zertifizierungsstellen:</translation>
    </message>
    <message>
        <source>Online &amp;services:</source>
        <translation>Online-&amp;Dienste:</translation>
    </message>
    <message>
        <source>Ask me</source>
        <translation>Nachfragen</translation>
    </message>
    <message>
        <source>Go on in the background</source>
        <translation>Im Hintergrund weiterladen</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>&amp;Closing while films arrive:</source>
        <translation>&amp;Schließen, während Filme laden:</translation>
    </message>
    <message>
        <source>Certificates (*.pem *.crt);;All files (*)</source>
        <translation>Zertifikate (*.pem *.crt);;Alle Dateien (*)</translation>
    </message>
    <message>
        <source>Another proxy is used from the next start on.</source>
        <translation>Ein anderer Proxy gilt ab dem nächsten Start.</translation>
    </message>
</context>
<context>
    <name>playerx::window::QueueQuestions</name>
    <message>
        <source>The online services do not allow “%1”. %2</source>
        <extracomment>%1 is a film&apos;s title, %2 are the words of the online services.</extracomment>
        <translation>Die Online-Dienste erlauben „%1“ nicht. %2</translation>
    </message>
    <message>
        <source>The address of “%1” could not be fetched.</source>
        <translation>Die Adresse von „%1“ ließ sich nicht abrufen.</translation>
    </message>
    <message>
        <source>The transfer of “%1” broke off.</source>
        <translation>Die Übertragung von „%1“ brach ab.</translation>
    </message>
    <message>
        <source>Choose a folder…</source>
        <translation>Ordner wählen …</translation>
    </message>
    <message>
        <source>Try again</source>
        <translation>Noch einmal versuchen</translation>
    </message>
    <message>
        <source>All slots for “%1” are taken. Which one may it have?</source>
        <translation>Alle Plätze für „%1“ sind belegt. Welchen darf er haben?</translation>
    </message>
    <message>
        <source>Give up this slot</source>
        <translation>Diesen Platz hergeben</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Keiner</translation>
    </message>
    <message>
        <source>a film</source>
        <translation>ein Film</translation>
    </message>
</context>
<context>
    <name>playerx::window::SeekBar</name>
    <message>
        <source>Place in the film</source>
        <translation>Stelle im Film</translation>
    </message>
</context>
<context>
    <name>playerx::window::StatusStrip</name>
    <message>
        <source>Progress of the whole queue</source>
        <translation>Fortschritt der ganzen Warteschlange</translation>
    </message>
    <message>
        <source>Free space</source>
        <translation>Freier Platz</translation>
    </message>
    <message>
        <source>%1 free in %2</source>
        <extracomment>Free space; %1 is a size, %2 the name of a folder.</extracomment>
        <translation>%1 frei in %2</translation>
    </message>
</context>
<context>
    <name>playerx::window::StatusText</name>
    <message>
        <source>less than a minute</source>
        <translation>weniger als eine Minute</translation>
    </message>
    <message>
        <source>about %1</source>
        <translation>etwa %1</translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n film(s)</source>
        <extracomment>%1 of %n films are done.</extracomment>
        <translation>
            <numerusform>%1 von %n Film</numerusform>
            <numerusform>%1 von %n Filmen</numerusform>
        </translation>
    </message>
    <message>
        <source>paused</source>
        <translation>angehalten</translation>
    </message>
</context>
<context>
    <name>playerx::window::ToolBar</name>
    <message>
        <source>Tools</source>
        <translation>Werkzeuge</translation>
    </message>
</context>
<context>
    <name>playerx::window::Tracks</name>
    <message>
        <source>Track %1</source>
        <translation>Spur %1</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <extracomment>A track&apos;s title, then its language.</extracomment>
        <translation>%1 (%2)</translation>
    </message>
</context>
<context>
    <name>playerx::window::Tray</name>
    <message>
        <source>Show the window</source>
        <translation>Fenster zeigen</translation>
    </message>
    <message>
        <source>%1
%2</source>
        <extracomment>Tool tip of the icon: the player&apos;s name, then the queue in numbers.</extracomment>
        <translation>%1
%2</translation>
    </message>
</context>
<context>
    <name>playerx::window::WatchingPage</name>
    <message>
        <source>Open with the desktop&apos;s player</source>
        <translation>Mit dem Player des Desktops öffnen</translation>
    </message>
    <message>
        <source>Film</source>
        <translation>Film</translation>
    </message>
    <message>
        <source>This player was built without playback of its own.</source>
        <translation>Dieser Player wurde ohne eigene Wiedergabe gebaut.</translation>
    </message>
    <message>
        <source>Nothing is playing. Choose a film in the list of downloads.</source>
        <translation>Es läuft nichts. Einen Film in der Liste der Downloads wählen.</translation>
    </message>
    <message>
        <source>Waiting for the film to arrive (%1)</source>
        <extracomment>%1 is the place in the film, such as &quot;12:34&quot;.</extracomment>
        <translation>Warten, bis der Film ankommt (%1)</translation>
    </message>
    <message>
        <source>Waiting for the beginning of the film to arrive</source>
        <translation>Warten, bis der Anfang des Films ankommt</translation>
    </message>
</context>
<context>
    <name>playerx::window::WindowDialogs</name>
    <message>
        <source>Add tickets</source>
        <translation>Tickets hinzufügen</translation>
    </message>
    <message>
        <source>Tickets (*.tix);;All files (*)</source>
        <translation>Tickets (*.tix);;Alle Dateien (*)</translation>
    </message>
    <message numerus="yes">
        <source>Delete %n film(s) from the disk?</source>
        <translation>
            <numerusform>%n Film von der Platte löschen?</numerusform>
            <numerusform>%n Filme von der Platte löschen?</numerusform>
        </translation>
    </message>
    <message>
        <source>Delete “%1” from the disk?</source>
        <translation>„%1“ von der Platte löschen?</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Films are still being downloaded.</source>
        <translation>Es werden noch Filme geladen.</translation>
    </message>
    <message>
        <source>They can go on in the background. When the player quits, they go on at its next start.</source>
        <translation>Sie können im Hintergrund weiterladen. Wird der Player beendet, laden sie beim nächsten Start weiter.</translation>
    </message>
    <message>
        <source>When the player quits, they go on at its next start.</source>
        <translation>Wird der Player beendet, laden sie beim nächsten Start weiter.</translation>
    </message>
    <message>
        <source>&amp;Do not ask again</source>
        <translation>&amp;Nicht noch einmal fragen</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>&amp;Go on in the background</source>
        <translation>&amp;Im Hintergrund weiterladen</translation>
    </message>
    <message>
        <source>Version %1. Downloads films and plays them while they arrive.</source>
        <translation>Version %1. Lädt Filme und spielt sie, während sie ankommen.</translation>
    </message>
</context>
</TS>
