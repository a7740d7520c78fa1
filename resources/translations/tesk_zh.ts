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
    <message>
        <source>Not FLAC data.</source>
        <translation>不是 FLAC 数据。</translation>
    </message>
    <message>
        <source>The FLAC header is damaged.</source>
        <translation>FLAC 头已损坏。</translation>
    </message>
    <message>
        <source>The FLAC audio frames are damaged or cut short.</source>
        <translation>FLAC 音频帧已损坏或被截断。</translation>
    </message>
</context>
<context>
    <name>FallbackAnalysisLibrary</name>
    <message>
        <source>The shared analysis library %1 can be reached again; results kept on this computer meanwhile are being sent to it.</source>
        <translation>已重新连接到共享分析库 %1；期间保存在本机的结果正在发送到该库。</translation>
    </message>
    <message>
        <source>The shared analysis library %1 does not let user %2 write to it; new analysis results are kept on this computer only.</source>
        <translation>共享分析库 %1 不允许用户 %2 写入；新的分析结果仅保存在本机。</translation>
    </message>
    <message>
        <source>Cannot use the shared analysis library %1: %2. Analysis results are kept on this computer until it can be used again.</source>
        <translation>无法使用共享分析库 %1：%2。在恢复可用之前，分析结果保存在本机。</translation>
    </message>
</context>
<context>
    <name>GacManager</name>
    <message>
        <source>Not connected to Nuendo; start the connection from the Nuendo Connection menu first.</source>
        <translation>未连接到 Nuendo，请先从“Nuendo 连接”菜单开始连接。</translation>
    </message>
    <message>
        <source>The path is too long to send to Nuendo (%1 bytes, at most %2): %3</source>
        <translation>路径过长，无法发送到 Nuendo（%1 字节，最多 %2 字节）: %3</translation>
    </message>
    <message>
        <source>Nuendo has not answered the previous request yet.</source>
        <translation>Nuendo 尚未响应上一个请求。</translation>
    </message>
    <message>
        <source>Nuendo did not answer in time; %1 was not opened.</source>
        <translation>Nuendo 未在规定时间内响应，未打开 %1。</translation>
    </message>
    <message>
        <source>Opened in Nuendo: %1</source>
        <translation>已在 Nuendo 中打开: %1</translation>
    </message>
    <message>
        <source>Nuendo could not open %1: %2</source>
        <translation>Nuendo 无法打开 %1: %2</translation>
    </message>
</context>
<context>
    <name>LibraryRoots</name>
    <message>
        <source>the library root &quot;%1&quot; has no name (NAME=FOLDER)</source>
        <translation>库根目录“%1”没有名称 (NAME=FOLDER)</translation>
    </message>
    <message>
        <source>the folder of the library root %1 is not an absolute path</source>
        <translation>库根目录 %1 的文件夹不是绝对路径</translation>
    </message>
    <message>
        <source>the library root %1 is given twice</source>
        <translation>库根目录 %1 重复指定</translation>
    </message>
</context>
<context>
    <name>LibraryServer</name>
    <message>
        <source>&quot;%1&quot; is not a postgresql:// URL</source>
        <translation>“%1”不是 postgresql:// URL</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a valid URL (%2)</source>
        <translation>“%1”不是有效的 URL (%2)</translation>
    </message>
    <message>
        <source>the URL holds a password; give it in ~/.pgpass (or PGPASSFILE) or PGPASSWORD instead</source>
        <translation>URL 中包含密码；请改为在 ~/.pgpass（或 PGPASSFILE）或 PGPASSWORD 中提供</translation>
    </message>
    <message>
        <source>the URL&apos;s parameter &quot;%1&quot; is not one Tesk knows (only host)</source>
        <translation>Tesk 不识别 URL 参数“%1”（仅支持 host）</translation>
    </message>
    <message>
        <source>the URL names no database (postgresql://user@host:port/database)</source>
        <translation>URL 中未指定数据库 (postgresql://user@host:port/database)</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Game Audio Connect</source>
        <translation>Game Audio Connect</translation>
    </message>
    <message>
        <source>To close the connection, please disable the network connection of Game Audio Connect server.</source>
        <translation>要关闭连接，请禁用 Game Audio Connect 服务器的网络连接。</translation>
    </message>
    <message>
        <source>[Waiting Connection] Stop connection</source>
        <translation>[等待连接] 停止连接</translation>
    </message>
    <message>
        <source>[Connected]</source>
        <translation>[已连接]</translation>
    </message>
    <message>
        <source>[Not Connected] Start connection</source>
        <translation>[未连接] 开始连接</translation>
    </message>
    <message>
        <source>Clear Analysis Library</source>
        <translation>清除分析库</translation>
    </message>
    <message>
        <source>Remove every stored analysis result? Files are read and analysed again the next time their folder is opened.</source>
        <translation>要删除所有已保存的分析结果吗？下次打开文件夹时将重新读取并分析文件。</translation>
    </message>
    <message>
        <source>Remove every analysis result from the shared library %1? Every workstation that uses it reads and analyses its files again.</source>
        <translation>要从共享库 %1 中删除所有分析结果吗？使用该库的每台工作站都将重新读取并分析其文件。</translation>
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
        <translation>最近浏览的文件夹</translation>
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
        <translation>同时显示子文件夹中的文件</translation>
    </message>
    <message>
        <source>Row Height</source>
        <translation>行高</translation>
    </message>
    <message>
        <source>Enlarge</source>
        <translation>增大</translation>
    </message>
    <message>
        <source>Shrink</source>
        <translation>减小</translation>
    </message>
    <message>
        <source>Reset to Default Settings</source>
        <translation>恢复默认设置</translation>
    </message>
    <message>
        <source>Analyze Loudness values</source>
        <translation>分析响度值</translation>
    </message>
    <message>
        <source>Display Loudness value of mono audio with raising 3dB</source>
        <translation>单声道音频的响度值提高 3dB 显示</translation>
    </message>
    <message>
        <source>Display multi-channel plots</source>
        <translation>显示多声道波形</translation>
    </message>
    <message>
        <source>Show hidden files and folders</source>
        <translation>显示隐藏的文件和文件夹</translation>
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
        <translation>快进</translation>
    </message>
    <message>
        <source>Seek backward</source>
        <translation>快退</translation>
    </message>
    <message>
        <source>Play selected tracks</source>
        <translation>播放所选曲目</translation>
    </message>
    <message>
        <source>Enable Playlist Playback</source>
        <translation>启用播放列表播放</translation>
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
        <translation>关于 Tesk</translation>
    </message>
    <message>
        <source>Open Sort Settings</source>
        <translation>打开排序设置</translation>
    </message>
    <message>
        <source>Tool</source>
        <translation>工具</translation>
    </message>
    <message>
        <source>Settings...</source>
        <translation>设置...</translation>
    </message>
    <message>
        <source>Font...</source>
        <translation>字体...</translation>
    </message>
    <message>
        <source>Theme</source>
        <translation>主题</translation>
    </message>
    <message>
        <source>System</source>
        <translation>跟随系统</translation>
    </message>
    <message>
        <source>Light</source>
        <translation>浅色</translation>
    </message>
    <message>
        <source>Dark</source>
        <translation>深色</translation>
    </message>
    <message>
        <source>Manage Bookmarks...</source>
        <translation>管理书签...</translation>
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
    <message>
        <source>Show in File Manager</source>
        <translation>在文件管理器中显示</translation>
    </message>
    <message>
        <source>Show detail view</source>
        <translation>显示详细视图</translation>
    </message>
    <message>
        <source>Match loudness</source>
        <translation>匹配响度</translation>
    </message>
    <message>
        <source>Analysis Library</source>
        <translation>分析库</translation>
    </message>
    <message>
        <source>Keep Analysis Results Between Sessions</source>
        <translation>在会话之间保留分析结果</translation>
    </message>
    <message>
        <source>Clear Analysis Library...</source>
        <translation>清除分析库...</translation>
    </message>
    <message>
        <source>Analysis Library Settings...</source>
        <translation>分析库设置...</translation>
    </message>
</context>
<context>
    <name>PostgresAnalysisLibrary</name>
    <message>
        <source>Qt&apos;s PostgreSQL driver is missing (Debian package libqt5sql5-psql)</source>
        <translation>缺少 Qt 的 PostgreSQL 驱动 (Debian 软件包 libqt5sql5-psql)</translation>
    </message>
    <message>
        <source>its tables were made by a newer version of Tesk</source>
        <translation>其数据表由更新版本的 Tesk 创建</translation>
    </message>
    <message>
        <source>it has no analysis tables yet, and user %1 may not create them (an administrator can run Tesk once as a user who may, or grant this one CREATE on the schema)</source>
        <translation>尚无分析数据表，且用户 %1 无权创建（管理员可以用有权限的用户运行一次 Tesk，或授予该用户对该模式的 CREATE 权限）</translation>
    </message>
    <message>
        <source>the connection to the server was lost</source>
        <translation>与服务器的连接已断开</translation>
    </message>
    <message>
        <source>user %1 may not write to its tables</source>
        <translation>用户 %1 无权写入其数据表</translation>
    </message>
</context>
<context>
    <name>RegionExport</name>
    <message>
        <source>The file cannot be read.</source>
        <translation>无法读取文件。</translation>
    </message>
    <message>
        <source>The region is empty.</source>
        <translation>选区为空。</translation>
    </message>
    <message>
        <source>The region is too long for a WAV file.</source>
        <translation>选区过长，无法写入 WAV 文件。</translation>
    </message>
    <message>
        <source>The region file cannot be written.</source>
        <translation>无法写入选区文件。</translation>
    </message>
    <message>
        <source>Cancelled.</source>
        <translation>已取消。</translation>
    </message>
</context>
<context>
    <name>SqliteAnalysisLibrary</name>
    <message>
        <source>no cache folder</source>
        <translation>没有缓存文件夹</translation>
    </message>
    <message>
        <source>cannot create its folder</source>
        <translation>无法创建其文件夹</translation>
    </message>
    <message>
        <source>not a file</source>
        <translation>不是文件</translation>
    </message>
    <message>
        <source>Qt&apos;s SQLite driver is missing</source>
        <translation>缺少 Qt 的 SQLite 驱动</translation>
    </message>
    <message>
        <source>The analysis library was damaged; it was moved to %1 and a new one was started.</source>
        <translation>分析库已损坏，已将其移至 %1 并新建了分析库。</translation>
    </message>
    <message>
        <source>The analysis library %1 is locked by another program; analysis results are kept for this session only.</source>
        <translation>分析库 %1 已被其他程序锁定，分析结果仅在本次会话中保留。</translation>
    </message>
    <message>
        <source>The analysis library %1 is read-only; new analysis results are kept for this session only.</source>
        <translation>分析库 %1 为只读，新的分析结果仅在本次会话中保留。</translation>
    </message>
    <message>
        <source>The analysis library %1 was written by a newer version of Tesk; analysis results are kept for this session only.</source>
        <translation>分析库 %1 由更新版本的 Tesk 写入，分析结果仅在本次会话中保留。</translation>
    </message>
    <message>
        <source>Cannot open the analysis library %1 (%2); analysis results are kept for this session only.</source>
        <translation>无法打开分析库 %1（%2），分析结果仅在本次会话中保留。</translation>
    </message>
    <message>
        <source>Cannot write to the analysis library %1 (%2); analysis results are kept for this session only.</source>
        <translation>无法写入分析库 %1（%2），分析结果仅在本次会话中保留。</translation>
    </message>
</context>
<context>
    <name>StatusProgress</name>
    <message>
        <source>Listing files...</source>
        <translation>正在列出文件...</translation>
    </message>
    <message>
        <source>%1 of %2 files</source>
        <translation>%1 / %2 个文件</translation>
    </message>
    <message>
        <source>%1 of %2 files, %3 left</source>
        <translation>%1 / %2 个文件，剩余 %3</translation>
    </message>
</context>
<context>
    <name>SubFormFont</name>
    <message>
        <source>Font Setting</source>
        <translation>字体设置</translation>
    </message>
    <message>
        <source>Tree</source>
        <translation>树状视图</translation>
    </message>
    <message>
        <source>Default</source>
        <translation>默认</translation>
    </message>
    <message>
        <source>Table</source>
        <translation>表格</translation>
    </message>
    <message>
        <source>Fit to cell size</source>
        <translation>适应单元格大小</translation>
    </message>
</context>
<context>
    <name>SubWidgetTableView</name>
    <message>
        <source>Show in Explorer</source>
        <translation>在资源管理器中显示</translation>
    </message>
    <message>
        <source>Open with an external tool</source>
        <translation>用外部工具打开</translation>
    </message>
    <message>
        <source>Copy to Clipboard</source>
        <translation>复制到剪贴板</translation>
    </message>
    <message>
        <source>Update information</source>
        <translation>更新信息</translation>
    </message>
    <message>
        <source>Open with Nuendo</source>
        <translation>用 Nuendo 打开</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>错误</translation>
    </message>
    <message>
        <source>Failed to copy to the Clipboard: invalid data.</source>
        <translation>复制到剪贴板失败：数据无效。</translation>
    </message>
    <message>
        <source>Show in File Manager</source>
        <translation>在文件管理器中显示</translation>
    </message>
</context>
<context>
    <name>SubWidgetTreeView</name>
    <message>
        <source>Show in Explorer</source>
        <translation>在资源管理器中显示</translation>
    </message>
    <message>
        <source>Show in File Manager</source>
        <translation>在文件管理器中显示</translation>
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
        <translation>取消获取文件列表</translation>
    </message>
    <message>
        <source>Cancel to acquire analyzed data</source>
        <translation>取消获取分析数据</translation>
    </message>
    <message>
        <source>Completed file list acquisition. System is registering files to Analysis Library...</source>
        <translation>文件列表获取完成。正在将文件注册到分析库...</translation>
    </message>
    <message>
        <source>Completed adding files to Analysis Library  Waiting for analyzed data...</source>
        <translation>文件已添加到分析库。正在等待分析数据...</translation>
    </message>
    <message>
        <source>File registration failed. Max number of files that can be registered has been exceeded.</source>
        <translation>文件注册失败。已超过可注册文件数的上限。</translation>
    </message>
    <message>
        <source>Completed data analysis from %1 to %2 of %3</source>
        <translation>已完成第 %1 至 %2 个文件的分析（共 %3 个）</translation>
    </message>
    <message>
        <source>Completed acquiring analyzed data</source>
        <translation>分析数据获取完成</translation>
    </message>
    <message>
        <source>Updating information</source>
        <translation>正在更新信息</translation>
    </message>
    <message>
        <source>Cancelled file list acquisition. Stopping acquisition of analyzed data...</source>
        <translation>已取消获取文件列表。正在停止获取分析数据...</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>警告</translation>
    </message>
    <message>
        <source>Cannot preview because XAudio2 initialization failed. Please ensure that DirectX End-User Runtimes (June 2010) is installed.</source>
        <translation>XAudio2 初始化失败，无法预览。请确认已安装 DirectX End-User Runtimes (June 2010)。</translation>
    </message>
    <message>
        <source>The output device &quot;%1&quot; is not available. Playing through the system default.</source>
        <translation>输出设备“%1”不可用。改用系统默认设备播放。</translation>
    </message>
    <message>
        <source>The output device &quot;%1&quot; stopped. Playing through the system default.</source>
        <translation>输出设备“%1”已停止。改用系统默认设备播放。</translation>
    </message>
    <message>
        <source>System default</source>
        <translation>系统默认</translation>
    </message>
    <message>
        <source>Folder not found: %1</source>
        <translation>找不到文件夹: %1</translation>
    </message>
    <message>
        <source>The analysis library is turned off.</source>
        <translation>分析库已关闭。</translation>
    </message>
    <message>
        <source>Cleared the analysis library.</source>
        <translation>已清除分析库。</translation>
    </message>
    <message>
        <source>Could not clear the analysis library.</source>
        <translation>无法清除分析库。</translation>
    </message>
</context>
<context>
    <name>UcsCatalog</name>
    <message>
        <source>The CatID list cannot be opened: %1</source>
        <translation>无法打开 CatID 列表：%1</translation>
    </message>
    <message>
        <source>The CatID list is too large: %1</source>
        <translation>CatID 列表过大：%1</translation>
    </message>
    <message>
        <source>The CatID list has no CatID column.</source>
        <translation>CatID 列表中没有 CatID 列。</translation>
    </message>
    <message>
        <source>The CatID list holds no CatID.</source>
        <translation>CatID 列表中没有任何 CatID。</translation>
    </message>
</context>
<context>
    <name>WidgetDetailView</name>
    <message>
        <source>The region could not be written: %1</source>
        <translation>无法导出选区：%1</translation>
    </message>
    <message>
        <source>Select a file to see its waveform</source>
        <translation>选择文件以查看其波形</translation>
    </message>
    <message>
        <source>Reading the waveform...</source>
        <translation>正在读取波形...</translation>
    </message>
    <message>
        <source>The waveform of this file cannot be read</source>
        <translation>无法读取此文件的波形</translation>
    </message>
    <message>
        <source>Region %1 s</source>
        <translation>选区 %1 秒</translation>
    </message>
    <message>
        <source>The region is still being written.</source>
        <translation>选区仍在导出中。</translation>
    </message>
    <message>
        <source>Show each channel</source>
        <translation>分声道显示</translation>
    </message>
    <message>
        <source>Clear region</source>
        <translation>清除选区</translation>
    </message>
    <message>
        <source>Hide detail view</source>
        <translation>隐藏详细视图</translation>
    </message>
    <message>
        <source>Folder not found: %1</source>
        <translation type="vanished">找不到文件夹: %1</translation>
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
    <message>
        <source>Match loudness</source>
        <translation>匹配响度</translation>
    </message>
    <message>
        <source>%1 dB</source>
        <translation>%1 dB</translation>
    </message>
    <message>
        <source>Loudness not measured yet: played at unity gain</source>
        <translation>尚未测量响度：以 0 dB 增益播放</translation>
    </message>
    <message>
        <source>Gain that brings the file to the loudness target</source>
        <translation>使文件达到目标响度的增益</translation>
    </message>
    <message>
        <source>Gain held at the boost limit</source>
        <translation>增益受最大提升限制</translation>
    </message>
    <message>
        <source>Gain held so that no sample goes over -1 dBFS</source>
        <translation>增益受限，使采样不超过 -1 dBFS</translation>
    </message>
    <message>
        <source>Sample peak not known: no boost</source>
        <translation>采样峰值未知：不提升</translation>
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
    <message>
        <source>Remove from Bookmarks</source>
        <translation>从书签中删除</translation>
    </message>
    <message>
        <source>The folder &quot;%1&quot; does not exist.</source>
        <translation>文件夹“%1”不存在。</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is neither a folder nor a WAV, AIFF, MP3, Ogg Vorbis or FLAC file.</source>
        <translation>“%1”既不是文件夹，也不是 WAV、AIFF、MP3、Ogg Vorbis 或 FLAC 文件。</translation>
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
        <translation>%1小时%2分%3秒</translation>
    </message>
    <message>
        <source>Number of audio files displayed: %1 Total time: %2</source>
        <translation>显示的音频文件数：%1&#x3000;总时长：%2</translation>
    </message>
</context>
<context>
    <name>krokTableModel</name>
    <message>
        <source>(no files)</source>
        <translation>（无文件）</translation>
    </message>
    <message>
        <source>File</source>
        <translation>文件名</translation>
    </message>
    <message>
        <source>Full Path</source>
        <translation>完整路径</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>大小</translation>
    </message>
    <message>
        <source>Modify Time</source>
        <translation>修改时间</translation>
    </message>
    <message>
        <source>Format</source>
        <translation>格式</translation>
    </message>
    <message>
        <source>Sampling Rate</source>
        <translation>采样率</translation>
    </message>
    <message>
        <source>Channels</source>
        <translation>声道数</translation>
    </message>
    <message>
        <source>Samples</source>
        <translation>采样数</translation>
    </message>
    <message>
        <source>Duration</source>
        <translation>时长</translation>
    </message>
    <message>
        <source>Plots</source>
        <translation>波形</translation>
    </message>
    <message>
        <source>Loudness</source>
        <translation>响度</translation>
    </message>
    <message>
        <source>Loops</source>
        <translation>循环</translation>
    </message>
    <message>
        <source>Sort Specification</source>
        <translation>排序指定</translation>
    </message>
    <message>
        <source>Sort Comments</source>
        <translation>排序备注</translation>
    </message>
    <message>
        <source>%1 GB</source>
        <translation>%1 GB</translation>
    </message>
    <message>
        <source>%1 MB</source>
        <translation>%1 MB</translation>
    </message>
    <message>
        <source>%1 byte</source>
        <translation>%1 字节</translation>
    </message>
    <message>
        <source>%1 KB</source>
        <translation>%1 KB</translation>
    </message>
    <message>
        <source>Description</source>
        <translation>描述</translation>
    </message>
    <message>
        <source>Title/Name</source>
        <translation>标题/名称</translation>
    </message>
    <message>
        <source>Artist/Originator</source>
        <translation>艺术家/创建者</translation>
    </message>
    <message>
        <source>Comment</source>
        <translation>注释</translation>
    </message>
    <message>
        <source>Date</source>
        <translation>日期</translation>
    </message>
    <message>
        <source>Tempo/Key</source>
        <translation>速度/调性</translation>
    </message>
    <message>
        <source>CatID</source>
        <translation>CatID</translation>
    </message>
    <message>
        <source>Category</source>
        <translation>类别</translation>
    </message>
    <message>
        <source>FX Name</source>
        <translation>音效名称</translation>
    </message>
    <message>
        <source>Creator</source>
        <translation>创作者</translation>
    </message>
    <message>
        <source>Source</source>
        <translation>来源</translation>
    </message>
    <message>
        <source>iXML description</source>
        <translation>iXML 描述</translation>
    </message>
    <message>
        <source>Title</source>
        <translation>标题</translation>
    </message>
    <message>
        <source>Album</source>
        <translation>专辑</translation>
    </message>
    <message>
        <source>Project</source>
        <translation>项目</translation>
    </message>
    <message>
        <source>Scene</source>
        <translation>场景</translation>
    </message>
    <message>
        <source>Take</source>
        <translation>条次</translation>
    </message>
    <message>
        <source>Tape</source>
        <translation>磁带</translation>
    </message>
    <message>
        <source>Artist</source>
        <translation>艺术家</translation>
    </message>
    <message>
        <source>Originator</source>
        <translation>创建者</translation>
    </message>
    <message>
        <source>Originator reference</source>
        <translation>创建者参考编号</translation>
    </message>
    <message>
        <source>Copyright</source>
        <translation>版权</translation>
    </message>
    <message>
        <source>Note</source>
        <translation>备注</translation>
    </message>
    <message>
        <source>iXML user fields</source>
        <translation>iXML 用户字段</translation>
    </message>
    <message>
        <source>Keywords</source>
        <translation>关键词</translation>
    </message>
    <message>
        <source>Genre</source>
        <translation>流派</translation>
    </message>
    <message>
        <source>Software</source>
        <translation>软件</translation>
    </message>
    <message>
        <source>Cue labels</source>
        <translation>提示点标签</translation>
    </message>
    <message>
        <source>Cue notes</source>
        <translation>提示点备注</translation>
    </message>
    <message>
        <source>Origination date</source>
        <translation>创建日期</translation>
    </message>
    <message>
        <source>Time reference</source>
        <translation>时间参考</translation>
    </message>
    <message>
        <source>Tempo</source>
        <translation>速度</translation>
    </message>
    <message>
        <source>Root note</source>
        <translation>根音</translation>
    </message>
    <message>
        <source>%1 (MIDI %2)</source>
        <translation>%1 (MIDI %2)</translation>
    </message>
    <message>
        <source>Beats</source>
        <translation>拍数</translation>
    </message>
    <message>
        <source>Meter</source>
        <translation>拍号</translation>
    </message>
    <message>
        <source>Type</source>
        <translation>类型</translation>
    </message>
    <message>
        <source>One-shot</source>
        <translation>单次</translation>
    </message>
    <message>
        <source>Loop</source>
        <translation>循环</translation>
    </message>
    <message>
        <source>Key</source>
        <translation>调性</translation>
    </message>
    <message>
        <source>User category</source>
        <translation>用户类别</translation>
    </message>
    <message>
        <source>SubCategory</source>
        <translation>子类别</translation>
    </message>
    <message>
        <source>User data</source>
        <translation>用户数据</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1：%2</translation>
    </message>
    <message>
        <source>%1 BPM</source>
        <translation>%1 BPM</translation>
    </message>
</context>
<context>
    <name>subFormBookmark</name>
    <message>
        <source>Bookmark Name</source>
        <translation>书签名称</translation>
    </message>
    <message>
        <source>Bookmark Manager</source>
        <translation>书签管理器</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>名称</translation>
    </message>
    <message>
        <source>Folder Path</source>
        <translation>文件夹路径</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>添加</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>编辑</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>删除</translation>
    </message>
    <message>
        <source>Move to top</source>
        <translation>移至顶部</translation>
    </message>
    <message>
        <source>Move Up</source>
        <translation>上移</translation>
    </message>
    <message>
        <source>Move Down</source>
        <translation>下移</translation>
    </message>
    <message>
        <source>Move to bottom</source>
        <translation>移至底部</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>Please select a folder</source>
        <translation>请选择文件夹</translation>
    </message>
</context>
<context>
    <name>subFormGAC</name>
    <message>
        <source>Nuendo Connection Settings</source>
        <translation>Nuendo 连接设置</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>地址</translation>
    </message>
    <message>
        <source>Port Number</source>
        <translation>端口号</translation>
    </message>
</context>
<context>
    <name>subFormLibrarySettings</name>
    <message>
        <source>Analysis Library Settings</source>
        <translation>分析库设置</translation>
    </message>
    <message>
        <source>Where analysis results are kept</source>
        <translation>分析结果的保存位置</translation>
    </message>
    <message>
        <source>On this computer</source>
        <translation>本机</translation>
    </message>
    <message>
        <source>In the studio&apos;s shared library on a PostgreSQL server</source>
        <translation>PostgreSQL 服务器上的工作室共享库</translation>
    </message>
    <message>
        <source>server name, address or socket folder</source>
        <translation>服务器名称、地址或套接字文件夹</translation>
    </message>
    <message>
        <source>Host</source>
        <translation>主机</translation>
    </message>
    <message>
        <source>Port</source>
        <translation>端口</translation>
    </message>
    <message>
        <source>Database</source>
        <translation>数据库</translation>
    </message>
    <message>
        <source>User</source>
        <translation>用户</translation>
    </message>
    <message>
        <source>Tesk never stores the password: it is read from the password file (PGPASSFILE, else ~/.pgpass) or from PGPASSWORD. When the server cannot be reached, results are kept on this computer and sent to it later.</source>
        <translation>Tesk 从不保存密码：密码从密码文件（PGPASSFILE，否则为 ~/.pgpass）或 PGPASSWORD 中读取。无法连接服务器时，结果保存在本机，稍后再发送到服务器。</translation>
    </message>
    <message>
        <source>Library Roots</source>
        <translation>库根目录</translation>
    </message>
    <message>
        <source>A shared folder under the name every workstation gives it (for example SFX for /mnt/sfx here and S:\ on a Windows workstation): files under it are found by every machine, wherever it mounts the share.</source>
        <translation>为共享文件夹指定所有工作站通用的名称（例如本机的 /mnt/sfx 和 Windows 工作站上的 S:\ 都称为 SFX）：无论各台机器将共享挂载在何处，都能找到其中的文件。</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>名称</translation>
    </message>
    <message>
        <source>Folder on this computer</source>
        <translation>本机上的文件夹</translation>
    </message>
    <message>
        <source>Add...</source>
        <translation>添加...</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>删除</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>Name the database of the shared library.</source>
        <translation>请填写共享库的数据库名称。</translation>
    </message>
    <message>
        <source>Give at most %1 library roots.</source>
        <translation>库根目录最多只能有 %1 个。</translation>
    </message>
    <message>
        <source>Select a shared folder</source>
        <translation>选择共享文件夹</translation>
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
    <message>
        <source>Description contains</source>
        <translation>描述包含</translation>
    </message>
    <message>
        <source>Letter case is ignored. If unspecified, this filter will not apply.</source>
        <translation>不区分大小写。未指定时，此筛选条件不适用。</translation>
    </message>
</context>
<context>
    <name>subFormSortSettings</name>
    <message>
        <source>Sort Settings</source>
        <translation>排序设置</translation>
    </message>
    <message>
        <source>Use CSV file for sorting</source>
        <translation>使用 CSV 文件排序</translation>
    </message>
    <message>
        <source>To import CSV file...</source>
        <translation>导入 CSV 文件...</translation>
    </message>
    <message>
        <source>Show the root of the relative path that the file was written to</source>
        <translation>文件中所写相对路径的根文件夹</translation>
    </message>
    <message>
        <source>To select relative path root...</source>
        <translation>选择相对路径的根文件夹...</translation>
    </message>
    <message>
        <source>Ignore first line</source>
        <translation>忽略第一行</translation>
    </message>
    <message>
        <source>Start Analyzing</source>
        <translation>开始分析</translation>
    </message>
    <message>
        <source>File Path</source>
        <translation>文件路径</translation>
    </message>
    <message>
        <source>Comments</source>
        <translation>备注</translation>
    </message>
    <message>
        <source>Move to the root folder of the relative path when sorting is applied</source>
        <translation>应用排序时转到相对路径的根文件夹</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>应用</translation>
    </message>
    <message>
        <source>CSV file</source>
        <translation>CSV 文件</translation>
    </message>
    <message>
        <source>Relative path root</source>
        <translation>相对路径根目录</translation>
    </message>
    <message>
        <source>File Path column</source>
        <translation>文件路径列</translation>
    </message>
    <message>
        <source>Comments column</source>
        <translation>备注列</translation>
    </message>
    <message>
        <source>Import CSV file</source>
        <translation>导入 CSV 文件</translation>
    </message>
    <message>
        <source>Select relative path root</source>
        <translation>选择相对路径根目录</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>错误</translation>
    </message>
    <message>
        <source>The CSV file could not be found.</source>
        <translation>找不到 CSV 文件。</translation>
    </message>
    <message>
        <source>CSV file analysis failed.</source>
        <translation>CSV 文件分析失败。</translation>
    </message>
    <message>
        <source>No files to reorder.</source>
        <translation>没有要重新排序的文件。</translation>
    </message>
    <message>
        <source>If the audio file is written to a relative path, ensure that the &quot;Relative path root&quot; folder in the &quot;Sort Settings&quot; dialog is correctly specified.</source>
        <translation>如果音频文件以相对路径写入，请确认“排序设置”对话框中的“相对路径根目录”文件夹指定正确。</translation>
    </message>
    <message>
        <source>If the audio file is in a subfolder, please click the checkbox &quot;Display all files from subfolders as well&quot; in the View menu.</source>
        <translation>如果音频文件位于子文件夹中，请在“视图”菜单中勾选“同时显示子文件夹中的文件”。</translation>
    </message>
    <message>
        <source>If the settings are changed, make sure to select &quot;Start Analyzing&quot; again.</source>
        <translation>如果更改了设置，请务必再次点击“开始分析”。</translation>
    </message>
</context>
<context>
    <name>subFormToolSettings</name>
    <message>
        <source>Tool Settings</source>
        <translation>工具设置</translation>
    </message>
    <message>
        <source>External Tools</source>
        <translation>外部工具</translation>
    </message>
    <message>
        <source>Open an .exe or .app file...</source>
        <translation>打开可执行文件...</translation>
    </message>
    <message>
        <source>Executable file path</source>
        <translation>可执行文件路径</translation>
    </message>
    <message>
        <source>Arguments: file path of the selected waveform is %FILEPATH%</source>
        <translation>参数：所选波形文件的路径为 %FILEPATH%</translation>
    </message>
    <message>
        <source>Seek Settings</source>
        <translation>跳转设置</translation>
    </message>
    <message>
        <source>Set playback time seek range with &apos;R&apos; and &apos;T&apos; keys (msec)</source>
        <translation>用 &apos;R&apos; 和 &apos;T&apos; 键跳转播放位置的幅度（毫秒）</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>Select external .exe file</source>
        <translation>选择外部工具的可执行文件</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>错误</translation>
    </message>
    <message>
        <source>Specified .exe file cannot be found. %1</source>
        <translation>找不到指定的可执行文件。%1</translation>
    </message>
    <message>
        <source>Specified file is not a program that can be run. %1</source>
        <translation>指定的文件不是可运行的程序。%1</translation>
    </message>
    <message>
        <source>Choose the program...</source>
        <translation>选择程序...</translation>
    </message>
    <message>
        <source>Select the external program</source>
        <translation>选择外部程序</translation>
    </message>
    <message>
        <source>Specified program cannot be found. %1</source>
        <translation>找不到指定的程序。%1</translation>
    </message>
    <message>
        <source>Preview</source>
        <translation>预览</translation>
    </message>
    <message>
        <source>Match loudness</source>
        <translation>匹配响度</translation>
    </message>
    <message>
        <source>System default</source>
        <translation>系统默认</translation>
    </message>
    <message>
        <source>Loudness target</source>
        <translation>目标响度</translation>
    </message>
    <message>
        <source>Largest boost</source>
        <translation>最大提升</translation>
    </message>
    <message>
        <source>Output device</source>
        <translation>输出设备</translation>
    </message>
    <message>
        <source>%1 (not available)</source>
        <translation>%1（不可用）</translation>
    </message>
    <message>
        <source>UCS Category List</source>
        <translation>UCS 类别列表</translation>
    </message>
    <message>
        <source>Open a CSV or TSV file...</source>
        <translation>打开 CSV 或 TSV 文件...</translation>
    </message>
    <message>
        <source>CatID list exported from the UCS spreadsheet (CSV or TSV with CatID, Category and SubCategory columns). Without it, UCS file names still fill the CatID, FX Name, Creator and Source columns.</source>
        <translation>从 UCS 电子表格导出的 CatID 列表（包含 CatID、Category 和 SubCategory 列的 CSV 或 TSV）。即使不指定，符合 UCS 规则的文件名仍会填写 CatID、音效名称、创作者和来源列。</translation>
    </message>
    <message>
        <source>Select the UCS CatID list</source>
        <translation>选择 UCS CatID 列表</translation>
    </message>
    <message>
        <source>CSV or TSV files (*.csv *.tsv *.txt);;All files (*)</source>
        <translation>CSV 或 TSV 文件 (*.csv *.tsv *.txt);;所有文件 (*)</translation>
    </message>
    <message>
        <source>Specified CatID list cannot be found. %1</source>
        <translation>找不到指定的 CatID 列表。%1</translation>
    </message>
    <message>
        <source>Analysis</source>
        <translation>分析</translation>
    </message>
    <message>
        <source>Files analysed at once (one per processor core at most). Fewer leave more of the computer to other programs while a folder is analysed.</source>
        <translation>同时分析的文件数（最多为处理器核心数）。数值越小，分析文件夹时留给其他程序的计算资源越多。</translation>
    </message>
</context>
</TS>
