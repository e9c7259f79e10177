<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US">
<context>
    <name>playerx::window::AddAddressesDialog</name>
    <message numerus="yes">
        <source>%n address(es) or ticket(s) found.</source>
        <translation>
            <numerusform>%n address or ticket found.</numerusform>
            <numerusform>%n addresses or tickets found.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n line(s) left out, such as “%1”.</source>
        <translation>
            <numerusform>%n line left out: “%1”.</numerusform>
            <numerusform>%n lines left out, such as “%1”.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>playerx::window::DesktopNews</name>
    <message numerus="yes">
        <source>%n film(s) are done.</source>
        <translation>
            <numerusform>%n film is done.</numerusform>
            <numerusform>%n films are done.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n film(s) have failed.</source>
        <translation>
            <numerusform>%n film has failed.</numerusform>
            <numerusform>%n films have failed.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>playerx::window::FilmCommands</name>
    <message numerus="yes">
        <source>%n address(es) or ticket(s) are still to be added.</source>
        <translation>
            <numerusform>%n address or ticket is still to be added.</numerusform>
            <numerusform>%n addresses or tickets are still to be added.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n film(s) were in the list already.</source>
        <translation>
            <numerusform>%n film was in the list already.</numerusform>
            <numerusform>%n films were in the list already.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n input(s) were not added. The first one: %1 — %2</source>
        <translation>
            <numerusform>%n input was not added: %1 — %2</numerusform>
            <numerusform>%n inputs were not added. The first one: %1 — %2</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>The ticket %1 names %n film(s), but something in it cannot be used. %2</source>
        <translation>
            <numerusform>The ticket %1 names %n film, but something in it cannot be used. %2</numerusform>
            <numerusform>The ticket %1 names %n films, but something in it cannot be used. %2</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n film(s) removed.</source>
        <translation>
            <numerusform>%n film removed.</numerusform>
            <numerusform>%n films removed.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>playerx::window::MessageStrip</name>
    <message numerus="yes">
        <source>%n more</source>
        <translation>
            <numerusform>%n more</numerusform>
            <numerusform>%n more</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>playerx::window::StatusText</name>
    <message numerus="yes">
        <source>%1 of %n film(s)</source>
        <extracomment>%1 of %n films are done.</extracomment>
        <translation>
            <numerusform>%1 of %n film</numerusform>
            <numerusform>%1 of %n films</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>playerx::window::WindowDialogs</name>
    <message numerus="yes">
        <source>Delete %n film(s) from the disk?</source>
        <translation>
            <numerusform>Delete %n film from the disk?</numerusform>
            <numerusform>Delete %n films from the disk?</numerusform>
        </translation>
    </message>
</context>
</TS>
