<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en">
<context>
    <name>MainWindow</name>
    <message>
        <source>Bookmark Name</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>MenuBar</name>
    <message>
        <source>Folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Recently viewed folders</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show in Explorer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Exit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>View</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Display files in subfolders as well</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Row Height</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enlarge</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shrink</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reset to Default Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Analyze Loudness values</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Display Loudness value of mono audio with raising 3dB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Display multi-channel plots</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show hidden files and folders</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preview</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stop</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Seek forward</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Seek backward</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Play selected tracks</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enable Playlist Playback</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Bookmark</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add to Bookmarks</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete Bookmarks</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Help</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>About Tesk</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TeskManager</name>
    <message>
        <source>Saving Settings...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Retrieving file list</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel file list acquisition</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel to acquire analyzed data</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Completed file list acquisition. System is registering files to Analysis Library...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Completed adding files to Analysis Library  Waiting for analyzed data...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>File registration failed. Max number of files that can be registered has been exceeded.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Completed data analysis from %1 to %2 of %3</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Completed acquiring analyzed data</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Updating information</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancelled file list acquisition. Stopping acquisition of analyzed data...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Warning</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cannot preview because XAudio2 initialization failed. Please ensure that DirectX End-User Runtimes (June 2010) is installed.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
