<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en">
<context>
    <name>AnalysisError</name>
    <message>
        <source>Not MP3 data: no run of consecutive MPEG audio frames was found.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This is not MP3 data: the file holds another format.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not Ogg Vorbis data.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The Ogg Vorbis header is damaged or too large.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The file cannot be opened.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The file no longer exists.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This is not a regular file.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The file name is not valid UTF-8, so the file cannot be opened.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The analysis of this file stopped unexpectedly (Tesk closed during it). It is skipped until the file changes.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The file kept changing while it was analysed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The audio data cannot be decoded.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not FLAC data.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The FLAC header is damaged.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The FLAC audio frames are damaged or cut short.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>FallbackAnalysisLibrary</name>
    <message>
        <source>The shared analysis library %1 can be reached again; results kept on this computer meanwhile are being sent to it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The shared analysis library %1 does not let user %2 write to it; new analysis results are kept on this computer only.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cannot use the shared analysis library %1: %2. Analysis results are kept on this computer until it can be used again.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>GacManager</name>
    <message>
        <source>Not connected to Nuendo; start the connection from the Nuendo Connection menu first.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The path is too long to send to Nuendo (%1 bytes, at most %2): %3</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nuendo has not answered the previous request yet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nuendo did not answer in time; %1 was not opened.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Opened in Nuendo: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nuendo could not open %1: %2</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>LibraryRoots</name>
    <message>
        <source>the library root &quot;%1&quot; has no name (NAME=FOLDER)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the folder of the library root %1 is not an absolute path</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the library root %1 is given twice</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>LibraryServer</name>
    <message>
        <source>&quot;%1&quot; is not a postgresql:// URL</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a valid URL (%2)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the URL holds a password; give it in ~/.pgpass (or PGPASSFILE) or PGPASSWORD instead</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the URL&apos;s parameter &quot;%1&quot; is not one Tesk knows (only host)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the URL names no database (postgresql://user@host:port/database)</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Game Audio Connect</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>To close the connection, please disable the network connection of Game Audio Connect server.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>[Waiting Connection] Stop connection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>[Connected]</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>[Not Connected] Start connection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Clear Analysis Library</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove every stored analysis result? Files are read and analysed again the next time their folder is opened.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove every analysis result from the shared library %1? Every workstation that uses it reads and analyses its files again.</source>
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
        <translation type="unfinished">Show in Explorer</translation>
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
        <translation type="unfinished">Add to Bookmarks</translation>
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
    <message>
        <source>Open Sort Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tool</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Settings...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Font...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Theme</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>System</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Light</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Dark</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Manage Bookmarks...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select a folder...</source>
        <translation>Select a folder...</translation>
    </message>
    <message>
        <source>Column</source>
        <translation>Column</translation>
    </message>
    <message>
        <source>Nuendo Connection</source>
        <translation>Nuendo Connection</translation>
    </message>
    <message>
        <source>Open Nuendo Connection Settings...</source>
        <translation>Open Nuendo Connection Settings...</translation>
    </message>
    <message>
        <source>Playback</source>
        <translation>Playback</translation>
    </message>
    <message>
        <source>Show in File Manager</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show detail view</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Match loudness</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Analysis Library</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep Analysis Results Between Sessions</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Clear Analysis Library...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Analysis Library Settings...</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PostgresAnalysisLibrary</name>
    <message>
        <source>Qt&apos;s PostgreSQL driver is missing (Debian package libqt5sql5-psql)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>its tables were made by a newer version of Tesk</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>it has no analysis tables yet, and user %1 may not create them (an administrator can run Tesk once as a user who may, or grant this one CREATE on the schema)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the connection to the server was lost</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>user %1 may not write to its tables</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>RegionExport</name>
    <message>
        <source>The file cannot be read.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The region is empty.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The region is too long for a WAV file.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The region file cannot be written.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancelled.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SqliteAnalysisLibrary</name>
    <message>
        <source>no cache folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>cannot create its folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>not a file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Qt&apos;s SQLite driver is missing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The analysis library was damaged; it was moved to %1 and a new one was started.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The analysis library %1 is locked by another program; analysis results are kept for this session only.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The analysis library %1 is read-only; new analysis results are kept for this session only.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The analysis library %1 was written by a newer version of Tesk; analysis results are kept for this session only.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cannot open the analysis library %1 (%2); analysis results are kept for this session only.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cannot write to the analysis library %1 (%2); analysis results are kept for this session only.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>StatusProgress</name>
    <message>
        <source>Listing files...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 of %2 files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 of %2 files, %3 left</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SubFormFont</name>
    <message>
        <source>Font Setting</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tree</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Default</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Table</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Fit to cell size</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SubWidgetTableView</name>
    <message>
        <source>Show in Explorer</source>
        <translation type="unfinished">Show in Explorer</translation>
    </message>
    <message>
        <source>Open with an external tool</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copy to Clipboard</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Update information</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open with Nuendo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Error</source>
        <translation type="unfinished">Error</translation>
    </message>
    <message>
        <source>Failed to copy to the Clipboard: invalid data.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show in File Manager</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SubWidgetTreeView</name>
    <message>
        <source>Show in Explorer</source>
        <translation>Show in Explorer</translation>
    </message>
    <message>
        <source>Show in File Manager</source>
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
    <message>
        <source>The output device &quot;%1&quot; is not available. Playing through the system default.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The output device &quot;%1&quot; stopped. Playing through the system default.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>System default</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Folder not found: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The analysis library is turned off.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cleared the analysis library.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could not clear the analysis library.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>UcsCatalog</name>
    <message>
        <source>The CatID list cannot be opened: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The CatID list is too large: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The CatID list has no CatID column.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The CatID list holds no CatID.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>WidgetDetailView</name>
    <message>
        <source>The region could not be written: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select a file to see its waveform</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Reading the waveform...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The waveform of this file cannot be read</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Region %1 s</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The region is still being written.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show each channel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Clear region</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Hide detail view</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>WidgetPlayer</name>
    <message>
        <source>Playback</source>
        <translation type="unfinished">Playback</translation>
    </message>
    <message>
        <source>Stop</source>
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
        <source>Match loudness</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 dB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Loudness not measured yet: played at unity gain</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Gain that brings the file to the loudness target</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Gain held at the boost limit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Gain held so that no sample goes over -1 dBFS</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sample peak not known: no boost</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>WidgetRootPath</name>
    <message>
        <source>Refresh</source>
        <translation>Refresh</translation>
    </message>
    <message>
        <source>Add to Bookmarks</source>
        <translation>Add to Bookmarks</translation>
    </message>
    <message>
        <source>Select a folder</source>
        <translation>Select a folder</translation>
    </message>
    <message>
        <source>Please select a folder</source>
        <translation>Please select a folder</translation>
    </message>
    <message>
        <source>Remove from Bookmarks</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The folder &quot;%1&quot; does not exist.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&quot;%1&quot; is neither a folder nor a WAV, AIFF, MP3, Ogg Vorbis or FLAC file.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>WidgetSearch</name>
    <message>
        <source>Use Advanced Search Settings</source>
        <translation>Use Advanced Search Settings</translation>
    </message>
    <message>
        <source>Open Advanced Settings...</source>
        <translation>Open Advanced Settings...</translation>
    </message>
</context>
<context>
    <name>WidgetTableBrowser</name>
    <message>
        <source>%1hr%2min%3sec</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Number of audio files displayed: %1 Total time: %2</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>krokTableModel</name>
    <message>
        <source>(no files)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>File</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Full Path</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Size</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Modify Time</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Format</source>
        <translation type="unfinished">Format</translation>
    </message>
    <message>
        <source>Sampling Rate</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Channels</source>
        <translation type="unfinished">Channels</translation>
    </message>
    <message>
        <source>Samples</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Duration</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Plots</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Loudness</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Loops</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sort Specification</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sort Comments</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 GB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 MB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 byte</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 KB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Description</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Title/Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Artist/Originator</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Comment</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Date</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tempo/Key</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>CatID</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Category</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>FX Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Creator</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Source</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>iXML description</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Title</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Album</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Project</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Scene</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Take</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tape</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Artist</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Originator</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Originator reference</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Copyright</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Note</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>iXML user fields</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keywords</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Genre</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Software</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cue labels</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cue notes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Origination date</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Time reference</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tempo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Root note</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 (MIDI %2)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Beats</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Meter</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Type</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>One-shot</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Loop</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Key</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>User category</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>SubCategory</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>User data</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 BPM</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>subFormBookmark</name>
    <message>
        <source>Bookmark Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Bookmark Manager</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Folder Path</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Edit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move to top</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move Up</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move Down</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move to bottom</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished">Cancel</translation>
    </message>
    <message>
        <source>Please select a folder</source>
        <translation type="unfinished">Please select a folder</translation>
    </message>
</context>
<context>
    <name>subFormGAC</name>
    <message>
        <source>Nuendo Connection Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished">Cancel</translation>
    </message>
    <message>
        <source>Address</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Port Number</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>subFormLibrarySettings</name>
    <message>
        <source>Analysis Library Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Where analysis results are kept</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>On this computer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>In the studio&apos;s shared library on a PostgreSQL server</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>server name, address or socket folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Host</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Port</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Database</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>User</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tesk never stores the password: it is read from the password file (PGPASSFILE, else ~/.pgpass) or from PGPASSWORD. When the server cannot be reached, results are kept on this computer and sent to it later.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Library Roots</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A shared folder under the name every workstation gives it (for example SFX for /mnt/sfx here and S:\ on a Windows workstation): files under it are found by every machine, wherever it mounts the share.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Folder on this computer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished">Cancel</translation>
    </message>
    <message>
        <source>Name the database of the shared library.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Give at most %1 library roots.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select a shared folder</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>subFormSearch</name>
    <message>
        <source>Advanced Search Settings</source>
        <translation>Advanced Search Settings</translation>
    </message>
    <message>
        <source>Use Advanced Search Settings</source>
        <translation>Use Advanced Search Settings</translation>
    </message>
    <message>
        <source>Name (partial match)</source>
        <translation>Name (partial match)</translation>
    </message>
    <message>
        <source>If unspecified, the Name filter will not apply.</source>
        <translation>If unspecified, the Name filter will not apply.</translation>
    </message>
    <message>
        <source>Format</source>
        <translation>Format</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>Error</translation>
    </message>
    <message>
        <source>Sampling rate</source>
        <translation>Sampling rate</translation>
    </message>
    <message>
        <source>Channels</source>
        <translation>Channels</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Time</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>Show only when greater than or equal to</source>
        <translation>Show only when greater than or equal to</translation>
    </message>
    <message>
        <source>Show only when less than or equal to</source>
        <translation>Show only when less than or equal to</translation>
    </message>
    <message>
        <source>Show only when equal to</source>
        <translation>Show only when equal to</translation>
    </message>
    <message>
        <source>Description contains</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Letter case is ignored. If unspecified, this filter will not apply.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>subFormSortSettings</name>
    <message>
        <source>Sort Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Use CSV file for sorting</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>To import CSV file...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show the root of the relative path that the file was written to</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>To select relative path root...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ignore first line</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Start Analyzing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>File Path</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Comments</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move to the root folder of the relative path when sorting is applied</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Apply</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>CSV file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Relative path root</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>File Path column</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Comments column</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Import CSV file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select relative path root</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Error</source>
        <translation type="unfinished">Error</translation>
    </message>
    <message>
        <source>The CSV file could not be found.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>CSV file analysis failed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No files to reorder.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>If the audio file is written to a relative path, ensure that the &quot;Relative path root&quot; folder in the &quot;Sort Settings&quot; dialog is correctly specified.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>If the audio file is in a subfolder, please click the checkbox &quot;Display all files from subfolders as well&quot; in the View menu.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>If the settings are changed, make sure to select &quot;Start Analyzing&quot; again.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>subFormToolSettings</name>
    <message>
        <source>Tool Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>External Tools</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open an .exe or .app file...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Executable file path</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Arguments: file path of the selected waveform is %FILEPATH%</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Seek Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Set playback time seek range with &apos;R&apos; and &apos;T&apos; keys (msec)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished">Cancel</translation>
    </message>
    <message>
        <source>Select external .exe file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Error</source>
        <translation type="unfinished">Error</translation>
    </message>
    <message>
        <source>Specified .exe file cannot be found. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Specified file is not a program that can be run. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose the program...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select the external program</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Specified program cannot be found. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preview</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Match loudness</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>System default</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Loudness target</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Largest boost</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Output device</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 (not available)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>UCS Category List</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open a CSV or TSV file...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>CatID list exported from the UCS spreadsheet (CSV or TSV with CatID, Category and SubCategory columns). Without it, UCS file names still fill the CatID, FX Name, Creator and Source columns.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select the UCS CatID list</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>CSV or TSV files (*.csv *.tsv *.txt);;All files (*)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Specified CatID list cannot be found. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Analysis</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Files analysed at once (one per processor core at most). Fewer leave more of the computer to other programs while a folder is analysed.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
