<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN">
<context>
    <name>AnalysisError</name>
    <message>
        <source>Not MP3 data: no run of consecutive MPEG audio frames was found.</source>
        <translation>不是 MP3 数据：未找到连续的 MPEG 音频帧。</translation>
    </message>
    <message>
        <source>This is not MP3 data: the file holds another format.</source>
        <translation>不是 MP3 数据：文件为其他格式。</translation>
    </message>
    <message>
        <source>Not Ogg Vorbis data.</source>
        <translation>不是 Ogg Vorbis 数据。</translation>
    </message>
    <message>
        <source>The Ogg Vorbis header is damaged or too large.</source>
        <translation>Ogg Vorbis 头已损坏或过大。</translation>
    </message>
    <message>
        <source>The file cannot be opened.</source>
        <translation>无法打开文件。</translation>
    </message>
    <message>
        <source>The file no longer exists.</source>
        <translation>文件已不存在。</translation>
    </message>
    <message>
        <source>This is not a regular file.</source>
        <translation>不是普通文件。</translation>
    </message>
    <message>
        <source>The file name is not valid UTF-8, so the file cannot be opened.</source>
        <translation>文件名不是有效的 UTF-8，无法打开文件。</translation>
    </message>
    <message>
        <source>The analysis of this file stopped unexpectedly (Tesk closed during it). It is skipped until the file changes.</source>
        <translation>此文件的分析意外中止（分析期间 Tesk 已关闭）。在文件更改之前将跳过此文件。</translation>
    </message>
    <message>
        <source>The file kept changing while it was analysed.</source>
        <translation>分析期间文件不断变化。</translation>
    </message>
    <message>
        <source>The audio data cannot be decoded.</source>
        <translation>无法解码音频数据。</translation>
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
</context>
<context>
    <name>MenuBar</name>
    <message>
        <source>Folder</source>
        <translation>文件夹</translation>
    </message>
    <message>
        <source>Recently viewed folders</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show in Explorer</source>
        <translation>在资源管理器中显示</translation>
    </message>
    <message>
        <source>Exit</source>
        <translation>退出</translation>
    </message>
    <message>
        <source>View</source>
        <translation>视图</translation>
    </message>
    <message>
        <source>Display files in subfolders as well</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Row Height</source>
        <translation>行高</translation>
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
        <translation>预览</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>停止</translation>
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
        <translation type="unfinished">播放所选曲目</translation>
    </message>
    <message>
        <source>Enable Playlist Playback</source>
        <translation type="unfinished">启用播放列表播放</translation>
    </message>
    <message>
        <source>Bookmark</source>
        <translation>书签</translation>
    </message>
    <message>
        <source>Add to Bookmarks</source>
        <translation>添加到书签</translation>
    </message>
    <message>
        <source>Delete Bookmarks</source>
        <translation>删除书签</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>帮助</translation>
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
        <translation>选择文件夹...</translation>
    </message>
    <message>
        <source>Column</source>
        <translation>列</translation>
    </message>
    <message>
        <source>Nuendo Connection</source>
        <translation>Nuendo 连接</translation>
    </message>
    <message>
        <source>Open Nuendo Connection Settings...</source>
        <translation>打开 Nuendo 连接设置...</translation>
    </message>
    <message>
        <source>Playback</source>
        <translation>播放</translation>
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
        <translation type="unfinished">在资源管理器中显示</translation>
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
        <translation type="unfinished">错误</translation>
    </message>
    <message>
        <source>Failed to copy to the Clipboard: invalid data.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SubWidgetTreeView</name>
    <message>
        <source>Show in Explorer</source>
        <translation>在资源管理器中显示</translation>
    </message>
</context>
<context>
    <name>TeskManager</name>
    <message>
        <source>Saving Settings...</source>
        <translation>正在保存设置...</translation>
    </message>
    <message>
        <source>Retrieving file list</source>
        <translation>正在获取文件列表</translation>
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
        <translation>分析数据获取完成</translation>
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
<context>
    <name>WidgetPlayer</name>
    <message>
        <source>Playback</source>
        <translation>播放</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>停止</translation>
    </message>
    <message>
        <source>Play selected tracks</source>
        <translation>播放所选曲目</translation>
    </message>
    <message>
        <source>Enable Playlist Playback</source>
        <translation>启用播放列表播放</translation>
    </message>
</context>
<context>
    <name>WidgetRootPath</name>
    <message>
        <source>Refresh</source>
        <translation>刷新</translation>
    </message>
    <message>
        <source>Add to Bookmarks</source>
        <translation>添加到书签</translation>
    </message>
    <message>
        <source>Select a folder</source>
        <translation>选择文件夹</translation>
    </message>
    <message>
        <source>Please select a folder</source>
        <translation>请选择文件夹</translation>
    </message>
</context>
<context>
    <name>WidgetSearch</name>
    <message>
        <source>Use Advanced Search Settings</source>
        <translation>使用高级搜索设置</translation>
    </message>
    <message>
        <source>Open Advanced Settings...</source>
        <translation>打开高级设置...</translation>
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
        <translation type="unfinished">取消</translation>
    </message>
    <message>
        <source>Please select a folder</source>
        <translation type="unfinished">请选择文件夹</translation>
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
        <translation type="unfinished">取消</translation>
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
    <name>subFormSearch</name>
    <message>
        <source>Advanced Search Settings</source>
        <translation>高级搜索设置</translation>
    </message>
    <message>
        <source>Use Advanced Search Settings</source>
        <translation>使用高级搜索设置</translation>
    </message>
    <message>
        <source>Name (partial match)</source>
        <translation>名称（部分匹配）</translation>
    </message>
    <message>
        <source>If unspecified, the Name filter will not apply.</source>
        <translation>如未指定，则不应用名称筛选。</translation>
    </message>
    <message>
        <source>Format</source>
        <translation>格式</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>错误</translation>
    </message>
    <message>
        <source>Sampling rate</source>
        <translation>采样率</translation>
    </message>
    <message>
        <source>Channels</source>
        <translation>声道数</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>时间</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>Show only when greater than or equal to</source>
        <translation>仅在大于或等于时显示</translation>
    </message>
    <message>
        <source>Show only when less than or equal to</source>
        <translation>仅在小于或等于时显示</translation>
    </message>
    <message>
        <source>Show only when equal to</source>
        <translation>仅在等于时显示</translation>
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
        <translation type="unfinished">错误</translation>
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
        <translation type="unfinished">取消</translation>
    </message>
    <message>
        <source>Select external .exe file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Error</source>
        <translation type="unfinished">错误</translation>
    </message>
    <message>
        <source>Specified .exe file cannot be found. %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
