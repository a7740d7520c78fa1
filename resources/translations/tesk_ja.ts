<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja">
<context>
    <name>AnalysisError</name>
    <message>
        <source>Not MP3 data: no run of consecutive MPEG audio frames was found.</source>
        <translation>MP3 データではありません: 連続した MPEG オーディオフレームが見つかりません。</translation>
    </message>
    <message>
        <source>This is not MP3 data: the file holds another format.</source>
        <translation>MP3 データではありません: ファイルは別の形式です。</translation>
    </message>
    <message>
        <source>Not Ogg Vorbis data.</source>
        <translation>Ogg Vorbis データではありません。</translation>
    </message>
    <message>
        <source>The Ogg Vorbis header is damaged or too large.</source>
        <translation>Ogg Vorbis ヘッダーが壊れているか、大きすぎます。</translation>
    </message>
    <message>
        <source>The file cannot be opened.</source>
        <translation>ファイルを開けません。</translation>
    </message>
    <message>
        <source>The file no longer exists.</source>
        <translation>ファイルが存在しません。</translation>
    </message>
    <message>
        <source>This is not a regular file.</source>
        <translation>通常のファイルではありません。</translation>
    </message>
    <message>
        <source>The file name is not valid UTF-8, so the file cannot be opened.</source>
        <translation>ファイル名が有効な UTF-8 ではないため、ファイルを開けません。</translation>
    </message>
    <message>
        <source>The analysis of this file stopped unexpectedly (Tesk closed during it). It is skipped until the file changes.</source>
        <translation>このファイルの解析が予期せず停止しました (解析中に Tesk が終了しました)。ファイルが変更されるまでスキップします。</translation>
    </message>
    <message>
        <source>The file kept changing while it was analysed.</source>
        <translation>解析中にファイルが変更され続けました。</translation>
    </message>
    <message>
        <source>The audio data cannot be decoded.</source>
        <translation>オーディオデータをデコードできません。</translation>
    </message>
    <message>
        <source>Not FLAC data.</source>
        <translation>FLAC データではありません。</translation>
    </message>
    <message>
        <source>The FLAC header is damaged.</source>
        <translation>FLAC ヘッダーが壊れています。</translation>
    </message>
    <message>
        <source>The FLAC audio frames are damaged or cut short.</source>
        <translation>FLAC のオーディオフレームが壊れているか、途中で切れています。</translation>
    </message>
</context>
<context>
    <name>FallbackAnalysisLibrary</name>
    <message>
        <source>The shared analysis library %1 can be reached again; results kept on this computer meanwhile are being sent to it.</source>
        <translation>共有解析ライブラリ %1 に再び接続できました。その間このコンピューターに保存した結果を送信しています。</translation>
    </message>
    <message>
        <source>The shared analysis library %1 does not let user %2 write to it; new analysis results are kept on this computer only.</source>
        <translation>共有解析ライブラリ %1 はユーザー %2 の書き込みを許可していません。新しい解析結果はこのコンピューターにのみ保存されます。</translation>
    </message>
    <message>
        <source>Cannot use the shared analysis library %1: %2. Analysis results are kept on this computer until it can be used again.</source>
        <translation>共有解析ライブラリ %1 を使用できません: %2。再び使用できるようになるまで、解析結果はこのコンピューターに保存されます。</translation>
    </message>
</context>
<context>
    <name>GacManager</name>
    <message>
        <source>Not connected to Nuendo; start the connection from the Nuendo Connection menu first.</source>
        <translation>Nuendo に接続されていません。先に「Nuendo 接続」メニューから接続を開始してください。</translation>
    </message>
    <message>
        <source>The path is too long to send to Nuendo (%1 bytes, at most %2): %3</source>
        <translation>パスが長すぎるため Nuendo に送信できません（%1 バイト、上限 %2 バイト）: %3</translation>
    </message>
    <message>
        <source>Nuendo has not answered the previous request yet.</source>
        <translation>Nuendo から前回の要求への応答がまだありません。</translation>
    </message>
    <message>
        <source>Nuendo did not answer in time; %1 was not opened.</source>
        <translation>Nuendo が時間内に応答しなかったため、%1 は開かれませんでした。</translation>
    </message>
    <message>
        <source>Opened in Nuendo: %1</source>
        <translation>Nuendo で開きました: %1</translation>
    </message>
    <message>
        <source>Nuendo could not open %1: %2</source>
        <translation>Nuendo で %1 を開けませんでした: %2</translation>
    </message>
</context>
<context>
    <name>LibraryRoots</name>
    <message>
        <source>the library root &quot;%1&quot; has no name (NAME=FOLDER)</source>
        <translation>ライブラリルート「%1」に名前がありません (NAME=FOLDER)</translation>
    </message>
    <message>
        <source>the folder of the library root %1 is not an absolute path</source>
        <translation>ライブラリルート %1 のフォルダーが絶対パスではありません</translation>
    </message>
    <message>
        <source>the library root %1 is given twice</source>
        <translation>ライブラリルート %1 が重複しています</translation>
    </message>
</context>
<context>
    <name>LibraryServer</name>
    <message>
        <source>&quot;%1&quot; is not a postgresql:// URL</source>
        <translation>「%1」は postgresql:// URL ではありません</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a valid URL (%2)</source>
        <translation>「%1」は有効な URL ではありません (%2)</translation>
    </message>
    <message>
        <source>the URL holds a password; give it in ~/.pgpass (or PGPASSFILE) or PGPASSWORD instead</source>
        <translation>URL にパスワードが含まれています。代わりに ~/.pgpass (または PGPASSFILE) か PGPASSWORD で指定してください</translation>
    </message>
    <message>
        <source>the URL&apos;s parameter &quot;%1&quot; is not one Tesk knows (only host)</source>
        <translation>URL のパラメーター「%1」は Tesk では使用できません (host のみ)</translation>
    </message>
    <message>
        <source>the URL names no database (postgresql://user@host:port/database)</source>
        <translation>URL にデータベースが指定されていません (postgresql://user@host:port/database)</translation>
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
        <translation>接続を終了するには、Game Audio Connect サーバーのネットワーク接続を無効にしてください。</translation>
    </message>
    <message>
        <source>[Waiting Connection] Stop connection</source>
        <translation>[接続待機中] 接続を中止</translation>
    </message>
    <message>
        <source>[Connected]</source>
        <translation>[接続中]</translation>
    </message>
    <message>
        <source>[Not Connected] Start connection</source>
        <translation>[未接続] 接続を開始</translation>
    </message>
    <message>
        <source>Clear Analysis Library</source>
        <translation>解析ライブラリの消去</translation>
    </message>
    <message>
        <source>Remove every stored analysis result? Files are read and analysed again the next time their folder is opened.</source>
        <translation>保存されているすべての解析結果を削除しますか？ 次にフォルダーを開いたときに、ファイルを読み込んで再解析します。</translation>
    </message>
    <message>
        <source>Remove every analysis result from the shared library %1? Every workstation that uses it reads and analyses its files again.</source>
        <translation>共有ライブラリ %1 からすべての解析結果を削除しますか？このライブラリを使うすべてのワークステーションがファイルを再度読み込んで解析します。</translation>
    </message>
</context>
<context>
    <name>MenuBar</name>
    <message>
        <source>Folder</source>
        <translation>フォルダー</translation>
    </message>
    <message>
        <source>Recently viewed folders</source>
        <translation>最近表示したフォルダー</translation>
    </message>
    <message>
        <source>Show in Explorer</source>
        <translation>エクスプローラーで表示</translation>
    </message>
    <message>
        <source>Exit</source>
        <translation>終了</translation>
    </message>
    <message>
        <source>View</source>
        <translation>表示</translation>
    </message>
    <message>
        <source>Display files in subfolders as well</source>
        <translation>サブフォルダー内のファイルも表示</translation>
    </message>
    <message>
        <source>Row Height</source>
        <translation>行の高さ</translation>
    </message>
    <message>
        <source>Enlarge</source>
        <translation>大きく</translation>
    </message>
    <message>
        <source>Shrink</source>
        <translation>小さく</translation>
    </message>
    <message>
        <source>Reset to Default Settings</source>
        <translation>既定の設定に戻す</translation>
    </message>
    <message>
        <source>Analyze Loudness values</source>
        <translation>ラウドネス値を解析</translation>
    </message>
    <message>
        <source>Display Loudness value of mono audio with raising 3dB</source>
        <translation>モノラル音声のラウドネス値を 3dB 上げて表示</translation>
    </message>
    <message>
        <source>Display multi-channel plots</source>
        <translation>マルチチャンネルの波形を表示</translation>
    </message>
    <message>
        <source>Show hidden files and folders</source>
        <translation>隠しファイルと隠しフォルダーを表示</translation>
    </message>
    <message>
        <source>Preview</source>
        <translation>プレビュー</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>停止</translation>
    </message>
    <message>
        <source>Seek forward</source>
        <translation>早送り</translation>
    </message>
    <message>
        <source>Seek backward</source>
        <translation>巻き戻し</translation>
    </message>
    <message>
        <source>Play selected tracks</source>
        <translation>選択したトラックを再生</translation>
    </message>
    <message>
        <source>Enable Playlist Playback</source>
        <translation>プレイリスト再生を有効にする</translation>
    </message>
    <message>
        <source>Bookmark</source>
        <translation>ブックマーク</translation>
    </message>
    <message>
        <source>Add to Bookmarks</source>
        <translation>ブックマークに追加</translation>
    </message>
    <message>
        <source>Delete Bookmarks</source>
        <translation>ブックマークを削除</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>ヘルプ</translation>
    </message>
    <message>
        <source>About Tesk</source>
        <translation>Tesk について</translation>
    </message>
    <message>
        <source>Open Sort Settings</source>
        <translation>並び順の設定を開く</translation>
    </message>
    <message>
        <source>Tool</source>
        <translation>ツール</translation>
    </message>
    <message>
        <source>Settings...</source>
        <translation>設定...</translation>
    </message>
    <message>
        <source>Font...</source>
        <translation>フォント...</translation>
    </message>
    <message>
        <source>Theme</source>
        <translation>テーマ</translation>
    </message>
    <message>
        <source>System</source>
        <translation>システム</translation>
    </message>
    <message>
        <source>Light</source>
        <translation>ライト</translation>
    </message>
    <message>
        <source>Dark</source>
        <translation>ダーク</translation>
    </message>
    <message>
        <source>Manage Bookmarks...</source>
        <translation>ブックマークの管理...</translation>
    </message>
    <message>
        <source>Select a folder...</source>
        <translation>フォルダーを選択...</translation>
    </message>
    <message>
        <source>Column</source>
        <translation>列</translation>
    </message>
    <message>
        <source>Nuendo Connection</source>
        <translation>Nuendo 接続</translation>
    </message>
    <message>
        <source>Open Nuendo Connection Settings...</source>
        <translation>Nuendo 接続設定を開く...</translation>
    </message>
    <message>
        <source>Playback</source>
        <translation>再生</translation>
    </message>
    <message>
        <source>Show in File Manager</source>
        <translation>ファイルマネージャーで表示</translation>
    </message>
    <message>
        <source>Show detail view</source>
        <translation>詳細ビューを表示</translation>
    </message>
    <message>
        <source>Match loudness</source>
        <translation>ラウドネスを揃える</translation>
    </message>
    <message>
        <source>Analysis Library</source>
        <translation>解析ライブラリ</translation>
    </message>
    <message>
        <source>Keep Analysis Results Between Sessions</source>
        <translation>解析結果を次回起動時も保持</translation>
    </message>
    <message>
        <source>Clear Analysis Library...</source>
        <translation>解析ライブラリを消去...</translation>
    </message>
    <message>
        <source>Analysis Library Settings...</source>
        <translation>解析ライブラリの設定...</translation>
    </message>
</context>
<context>
    <name>PostgresAnalysisLibrary</name>
    <message>
        <source>Qt&apos;s PostgreSQL driver is missing (Debian package libqt5sql5-psql)</source>
        <translation>Qt の PostgreSQL ドライバーがありません (Debian パッケージ libqt5sql5-psql)</translation>
    </message>
    <message>
        <source>its tables were made by a newer version of Tesk</source>
        <translation>テーブルが新しいバージョンの Tesk で作成されています</translation>
    </message>
    <message>
        <source>it has no analysis tables yet, and user %1 may not create them (an administrator can run Tesk once as a user who may, or grant this one CREATE on the schema)</source>
        <translation>解析テーブルがまだなく、ユーザー %1 には作成する権限がありません (管理者が作成権限のあるユーザーで Tesk を一度実行するか、このユーザーにスキーマの CREATE 権限を付与してください)</translation>
    </message>
    <message>
        <source>the connection to the server was lost</source>
        <translation>サーバーとの接続が切れました</translation>
    </message>
    <message>
        <source>user %1 may not write to its tables</source>
        <translation>ユーザー %1 にはテーブルへの書き込み権限がありません</translation>
    </message>
</context>
<context>
    <name>RegionExport</name>
    <message>
        <source>The file cannot be read.</source>
        <translation>ファイルを読み込めません。</translation>
    </message>
    <message>
        <source>The region is empty.</source>
        <translation>範囲が空です。</translation>
    </message>
    <message>
        <source>The region is too long for a WAV file.</source>
        <translation>範囲が長すぎて WAV ファイルに書き出せません。</translation>
    </message>
    <message>
        <source>The region file cannot be written.</source>
        <translation>範囲のファイルを書き込めません。</translation>
    </message>
    <message>
        <source>Cancelled.</source>
        <translation>キャンセルしました。</translation>
    </message>
</context>
<context>
    <name>SqliteAnalysisLibrary</name>
    <message>
        <source>no cache folder</source>
        <translation>キャッシュフォルダーがありません</translation>
    </message>
    <message>
        <source>cannot create its folder</source>
        <translation>フォルダーを作成できません</translation>
    </message>
    <message>
        <source>not a file</source>
        <translation>ファイルではありません</translation>
    </message>
    <message>
        <source>Qt&apos;s SQLite driver is missing</source>
        <translation>Qt の SQLite ドライバーがありません</translation>
    </message>
    <message>
        <source>The analysis library was damaged; it was moved to %1 and a new one was started.</source>
        <translation>解析ライブラリが破損していたため、%1 に移動して新しいライブラリを作成しました。</translation>
    </message>
    <message>
        <source>The analysis library %1 is locked by another program; analysis results are kept for this session only.</source>
        <translation>解析ライブラリ %1 は他のプログラムがロックしています。解析結果はこのセッション中のみ保持されます。</translation>
    </message>
    <message>
        <source>The analysis library %1 is read-only; new analysis results are kept for this session only.</source>
        <translation>解析ライブラリ %1 は読み取り専用です。新しい解析結果はこのセッション中のみ保持されます。</translation>
    </message>
    <message>
        <source>The analysis library %1 was written by a newer version of Tesk; analysis results are kept for this session only.</source>
        <translation>解析ライブラリ %1 は新しいバージョンの Tesk で作成されています。解析結果はこのセッション中のみ保持されます。</translation>
    </message>
    <message>
        <source>Cannot open the analysis library %1 (%2); analysis results are kept for this session only.</source>
        <translation>解析ライブラリ %1 を開けません（%2）。解析結果はこのセッション中のみ保持されます。</translation>
    </message>
    <message>
        <source>Cannot write to the analysis library %1 (%2); analysis results are kept for this session only.</source>
        <translation>解析ライブラリ %1 に書き込めません（%2）。解析結果はこのセッション中のみ保持されます。</translation>
    </message>
</context>
<context>
    <name>StatusProgress</name>
    <message>
        <source>Listing files...</source>
        <translation>ファイルを一覧中...</translation>
    </message>
    <message>
        <source>%1 of %2 files</source>
        <translation>%1 / %2 ファイル</translation>
    </message>
    <message>
        <source>%1 of %2 files, %3 left</source>
        <translation>%1 / %2 ファイル、残り %3</translation>
    </message>
</context>
<context>
    <name>SubFormFont</name>
    <message>
        <source>Font Setting</source>
        <translation>フォント設定</translation>
    </message>
    <message>
        <source>Tree</source>
        <translation>ツリー</translation>
    </message>
    <message>
        <source>Default</source>
        <translation>既定</translation>
    </message>
    <message>
        <source>Table</source>
        <translation>テーブル</translation>
    </message>
    <message>
        <source>Fit to cell size</source>
        <translation>セルの大きさに合わせる</translation>
    </message>
</context>
<context>
    <name>SubWidgetTableView</name>
    <message>
        <source>Show in Explorer</source>
        <translation>エクスプローラーで表示</translation>
    </message>
    <message>
        <source>Open with an external tool</source>
        <translation>外部ツールで開く</translation>
    </message>
    <message>
        <source>Copy to Clipboard</source>
        <translation>クリップボードにコピー</translation>
    </message>
    <message>
        <source>Update information</source>
        <translation>情報を更新</translation>
    </message>
    <message>
        <source>Open with Nuendo</source>
        <translation>Nuendo で開く</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>エラー</translation>
    </message>
    <message>
        <source>Failed to copy to the Clipboard: invalid data.</source>
        <translation>クリップボードへのコピーに失敗しました: データが無効です。</translation>
    </message>
    <message>
        <source>Show in File Manager</source>
        <translation>ファイルマネージャーで表示</translation>
    </message>
</context>
<context>
    <name>SubWidgetTreeView</name>
    <message>
        <source>Show in Explorer</source>
        <translation>エクスプローラーで表示</translation>
    </message>
    <message>
        <source>Show in File Manager</source>
        <translation>ファイルマネージャーで表示</translation>
    </message>
</context>
<context>
    <name>TeskManager</name>
    <message>
        <source>Saving Settings...</source>
        <translation>設定を保存中...</translation>
    </message>
    <message>
        <source>Retrieving file list</source>
        <translation>ファイルリストを取得中</translation>
    </message>
    <message>
        <source>Cancel file list acquisition</source>
        <translation>ファイルリストの取得をキャンセル</translation>
    </message>
    <message>
        <source>Cancel to acquire analyzed data</source>
        <translation>解析データの取得をキャンセル</translation>
    </message>
    <message>
        <source>Completed file list acquisition. System is registering files to Analysis Library...</source>
        <translation>ファイルリストの取得が完了しました。解析ライブラリにファイルを登録しています...</translation>
    </message>
    <message>
        <source>Completed adding files to Analysis Library  Waiting for analyzed data...</source>
        <translation>解析ライブラリへのファイル登録が完了しました。解析データを待っています...</translation>
    </message>
    <message>
        <source>File registration failed. Max number of files that can be registered has been exceeded.</source>
        <translation>ファイルの登録に失敗しました。登録できるファイル数の上限を超えています。</translation>
    </message>
    <message>
        <source>Completed data analysis from %1 to %2 of %3</source>
        <translation>%3 件中 %1 ～ %2 件目の解析が完了しました</translation>
    </message>
    <message>
        <source>Completed acquiring analyzed data</source>
        <translation>解析データの取得が完了しました</translation>
    </message>
    <message>
        <source>Updating information</source>
        <translation>情報を更新中</translation>
    </message>
    <message>
        <source>Cancelled file list acquisition. Stopping acquisition of analyzed data...</source>
        <translation>ファイルリストの取得をキャンセルしました。解析データの取得を停止しています...</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>警告</translation>
    </message>
    <message>
        <source>Cannot preview because XAudio2 initialization failed. Please ensure that DirectX End-User Runtimes (June 2010) is installed.</source>
        <translation>XAudio2 の初期化に失敗したため、プレビューできません。DirectX エンドユーザーランタイム (June 2010) がインストールされていることを確認してください。</translation>
    </message>
    <message>
        <source>The output device &quot;%1&quot; is not available. Playing through the system default.</source>
        <translation>出力デバイス「%1」は使用できません。システムの既定のデバイスで再生します。</translation>
    </message>
    <message>
        <source>The output device &quot;%1&quot; stopped. Playing through the system default.</source>
        <translation>出力デバイス「%1」が停止しました。システムの既定のデバイスで再生します。</translation>
    </message>
    <message>
        <source>System default</source>
        <translation>システムの既定</translation>
    </message>
    <message>
        <source>Folder not found: %1</source>
        <translation>フォルダが見つかりません: %1</translation>
    </message>
    <message>
        <source>The analysis library is turned off.</source>
        <translation>解析ライブラリはオフになっています。</translation>
    </message>
    <message>
        <source>Cleared the analysis library.</source>
        <translation>解析ライブラリを消去しました。</translation>
    </message>
    <message>
        <source>Could not clear the analysis library.</source>
        <translation>解析ライブラリを消去できませんでした。</translation>
    </message>
</context>
<context>
    <name>UcsCatalog</name>
    <message>
        <source>The CatID list cannot be opened: %1</source>
        <translation>CatIDリストを開けません: %1</translation>
    </message>
    <message>
        <source>The CatID list is too large: %1</source>
        <translation>CatIDリストが大きすぎます: %1</translation>
    </message>
    <message>
        <source>The CatID list has no CatID column.</source>
        <translation>CatIDリストにCatID列がありません。</translation>
    </message>
    <message>
        <source>The CatID list holds no CatID.</source>
        <translation>CatIDリストにCatIDが含まれていません。</translation>
    </message>
</context>
<context>
    <name>WidgetDetailView</name>
    <message>
        <source>The region could not be written: %1</source>
        <translation>範囲を書き出せませんでした: %1</translation>
    </message>
    <message>
        <source>Select a file to see its waveform</source>
        <translation>ファイルを選択すると波形を表示します</translation>
    </message>
    <message>
        <source>Reading the waveform...</source>
        <translation>波形を読み込んでいます...</translation>
    </message>
    <message>
        <source>The waveform of this file cannot be read</source>
        <translation>このファイルの波形は読み込めません</translation>
    </message>
    <message>
        <source>Region %1 s</source>
        <translation>範囲 %1 秒</translation>
    </message>
    <message>
        <source>The region is still being written.</source>
        <translation>範囲を書き出しています。</translation>
    </message>
    <message>
        <source>Show each channel</source>
        <translation>チャンネルごとに表示</translation>
    </message>
    <message>
        <source>Clear region</source>
        <translation>範囲を解除</translation>
    </message>
    <message>
        <source>Hide detail view</source>
        <translation>詳細ビューを隠す</translation>
    </message>
    <message>
        <source>Folder not found: %1</source>
        <translation type="vanished">フォルダが見つかりません: %1</translation>
    </message>
</context>
<context>
    <name>WidgetPlayer</name>
    <message>
        <source>Playback</source>
        <translation>再生</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>停止</translation>
    </message>
    <message>
        <source>Play selected tracks</source>
        <translation>選択したトラックを再生</translation>
    </message>
    <message>
        <source>Enable Playlist Playback</source>
        <translation>プレイリスト再生を有効にする</translation>
    </message>
    <message>
        <source>Match loudness</source>
        <translation>ラウドネスを揃える</translation>
    </message>
    <message>
        <source>%1 dB</source>
        <translation>%1 dB</translation>
    </message>
    <message>
        <source>Loudness not measured yet: played at unity gain</source>
        <translation>ラウドネス未測定のため 0 dB で再生</translation>
    </message>
    <message>
        <source>Gain that brings the file to the loudness target</source>
        <translation>ファイルをターゲットラウドネスに合わせるゲイン</translation>
    </message>
    <message>
        <source>Gain held at the boost limit</source>
        <translation>ブーストの上限でゲインを制限</translation>
    </message>
    <message>
        <source>Gain held so that no sample goes over -1 dBFS</source>
        <translation>サンプルが -1 dBFS を超えないようにゲインを制限</translation>
    </message>
    <message>
        <source>Sample peak not known: no boost</source>
        <translation>サンプルピークが不明のためブーストなし</translation>
    </message>
</context>
<context>
    <name>WidgetRootPath</name>
    <message>
        <source>Refresh</source>
        <translation>更新</translation>
    </message>
    <message>
        <source>Add to Bookmarks</source>
        <translation>ブックマークに追加</translation>
    </message>
    <message>
        <source>Select a folder</source>
        <translation>フォルダーを選択</translation>
    </message>
    <message>
        <source>Please select a folder</source>
        <translation>フォルダーを選択してください</translation>
    </message>
    <message>
        <source>Remove from Bookmarks</source>
        <translation>ブックマークから削除</translation>
    </message>
    <message>
        <source>The folder &quot;%1&quot; does not exist.</source>
        <translation>フォルダー &quot;%1&quot; は存在しません。</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is neither a folder nor a WAV, AIFF, MP3, Ogg Vorbis or FLAC file.</source>
        <translation>&quot;%1&quot; はフォルダーでも WAV、AIFF、MP3、Ogg Vorbis、FLAC ファイルでもありません。</translation>
    </message>
</context>
<context>
    <name>WidgetSearch</name>
    <message>
        <source>Use Advanced Search Settings</source>
        <translation>詳細検索設定を使用</translation>
    </message>
    <message>
        <source>Open Advanced Settings...</source>
        <translation>詳細設定を開く...</translation>
    </message>
</context>
<context>
    <name>WidgetTableBrowser</name>
    <message>
        <source>%1hr%2min%3sec</source>
        <translation>%1時間%2分%3秒</translation>
    </message>
    <message>
        <source>Number of audio files displayed: %1 Total time: %2</source>
        <translation>表示中のオーディオファイル数: %1&#x3000;合計時間: %2</translation>
    </message>
</context>
<context>
    <name>krokTableModel</name>
    <message>
        <source>(no files)</source>
        <translation>(ファイルなし)</translation>
    </message>
    <message>
        <source>File</source>
        <translation>ファイル名</translation>
    </message>
    <message>
        <source>Full Path</source>
        <translation>フルパス</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>サイズ</translation>
    </message>
    <message>
        <source>Modify Time</source>
        <translation>更新日時</translation>
    </message>
    <message>
        <source>Format</source>
        <translation>フォーマット</translation>
    </message>
    <message>
        <source>Sampling Rate</source>
        <translation>サンプリングレート</translation>
    </message>
    <message>
        <source>Channels</source>
        <translation>チャンネル数</translation>
    </message>
    <message>
        <source>Samples</source>
        <translation>サンプル数</translation>
    </message>
    <message>
        <source>Duration</source>
        <translation>長さ</translation>
    </message>
    <message>
        <source>Plots</source>
        <translation>波形</translation>
    </message>
    <message>
        <source>Loudness</source>
        <translation>ラウドネス</translation>
    </message>
    <message>
        <source>Loops</source>
        <translation>ループ</translation>
    </message>
    <message>
        <source>Sort Specification</source>
        <translation>並び順</translation>
    </message>
    <message>
        <source>Sort Comments</source>
        <translation>並び順コメント</translation>
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
        <translation>%1 バイト</translation>
    </message>
    <message>
        <source>%1 KB</source>
        <translation>%1 KB</translation>
    </message>
    <message>
        <source>Description</source>
        <translation>説明</translation>
    </message>
    <message>
        <source>Title/Name</source>
        <translation>タイトル/名前</translation>
    </message>
    <message>
        <source>Artist/Originator</source>
        <translation>アーティスト/作成者</translation>
    </message>
    <message>
        <source>Comment</source>
        <translation>コメント</translation>
    </message>
    <message>
        <source>Date</source>
        <translation>日付</translation>
    </message>
    <message>
        <source>Tempo/Key</source>
        <translation>テンポ/キー</translation>
    </message>
    <message>
        <source>CatID</source>
        <translation>CatID</translation>
    </message>
    <message>
        <source>Category</source>
        <translation>カテゴリー</translation>
    </message>
    <message>
        <source>FX Name</source>
        <translation>FX名</translation>
    </message>
    <message>
        <source>Creator</source>
        <translation>クリエイター</translation>
    </message>
    <message>
        <source>Source</source>
        <translation>ソース</translation>
    </message>
    <message>
        <source>iXML description</source>
        <translation>iXMLの説明</translation>
    </message>
    <message>
        <source>Title</source>
        <translation>タイトル</translation>
    </message>
    <message>
        <source>Album</source>
        <translation>アルバム</translation>
    </message>
    <message>
        <source>Project</source>
        <translation>プロジェクト</translation>
    </message>
    <message>
        <source>Scene</source>
        <translation>シーン</translation>
    </message>
    <message>
        <source>Take</source>
        <translation>テイク</translation>
    </message>
    <message>
        <source>Tape</source>
        <translation>テープ</translation>
    </message>
    <message>
        <source>Artist</source>
        <translation>アーティスト</translation>
    </message>
    <message>
        <source>Originator</source>
        <translation>作成者</translation>
    </message>
    <message>
        <source>Originator reference</source>
        <translation>作成者リファレンス</translation>
    </message>
    <message>
        <source>Copyright</source>
        <translation>著作権</translation>
    </message>
    <message>
        <source>Note</source>
        <translation>ノート</translation>
    </message>
    <message>
        <source>iXML user fields</source>
        <translation>iXMLユーザーフィールド</translation>
    </message>
    <message>
        <source>Keywords</source>
        <translation>キーワード</translation>
    </message>
    <message>
        <source>Genre</source>
        <translation>ジャンル</translation>
    </message>
    <message>
        <source>Software</source>
        <translation>ソフトウェア</translation>
    </message>
    <message>
        <source>Cue labels</source>
        <translation>キューラベル</translation>
    </message>
    <message>
        <source>Cue notes</source>
        <translation>キューノート</translation>
    </message>
    <message>
        <source>Origination date</source>
        <translation>作成日時</translation>
    </message>
    <message>
        <source>Time reference</source>
        <translation>タイムリファレンス</translation>
    </message>
    <message>
        <source>Tempo</source>
        <translation>テンポ</translation>
    </message>
    <message>
        <source>Root note</source>
        <translation>ルートノート</translation>
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
        <translation>拍子</translation>
    </message>
    <message>
        <source>Type</source>
        <translation>種類</translation>
    </message>
    <message>
        <source>One-shot</source>
        <translation>ワンショット</translation>
    </message>
    <message>
        <source>Loop</source>
        <translation>ループ</translation>
    </message>
    <message>
        <source>Key</source>
        <translation>キー</translation>
    </message>
    <message>
        <source>User category</source>
        <translation>ユーザーカテゴリー</translation>
    </message>
    <message>
        <source>SubCategory</source>
        <translation>サブカテゴリー</translation>
    </message>
    <message>
        <source>User data</source>
        <translation>ユーザーデータ</translation>
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
        <translation>ブックマーク名</translation>
    </message>
    <message>
        <source>Bookmark Manager</source>
        <translation>ブックマークの管理</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>名前</translation>
    </message>
    <message>
        <source>Folder Path</source>
        <translation>フォルダーのパス</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>追加</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>編集</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>削除</translation>
    </message>
    <message>
        <source>Move to top</source>
        <translation>先頭へ移動</translation>
    </message>
    <message>
        <source>Move Up</source>
        <translation>上へ移動</translation>
    </message>
    <message>
        <source>Move Down</source>
        <translation>下へ移動</translation>
    </message>
    <message>
        <source>Move to bottom</source>
        <translation>末尾へ移動</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>キャンセル</translation>
    </message>
    <message>
        <source>Please select a folder</source>
        <translation>フォルダーを選択してください</translation>
    </message>
</context>
<context>
    <name>subFormGAC</name>
    <message>
        <source>Nuendo Connection Settings</source>
        <translation>Nuendo 接続設定</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>キャンセル</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>アドレス</translation>
    </message>
    <message>
        <source>Port Number</source>
        <translation>ポート番号</translation>
    </message>
</context>
<context>
    <name>subFormLibrarySettings</name>
    <message>
        <source>Analysis Library Settings</source>
        <translation>解析ライブラリの設定</translation>
    </message>
    <message>
        <source>Where analysis results are kept</source>
        <translation>解析結果の保存先</translation>
    </message>
    <message>
        <source>On this computer</source>
        <translation>このコンピューター</translation>
    </message>
    <message>
        <source>In the studio&apos;s shared library on a PostgreSQL server</source>
        <translation>PostgreSQL サーバー上のスタジオ共有ライブラリ</translation>
    </message>
    <message>
        <source>server name, address or socket folder</source>
        <translation>サーバー名、アドレスまたはソケットフォルダー</translation>
    </message>
    <message>
        <source>Host</source>
        <translation>ホスト</translation>
    </message>
    <message>
        <source>Port</source>
        <translation>ポート</translation>
    </message>
    <message>
        <source>Database</source>
        <translation>データベース</translation>
    </message>
    <message>
        <source>User</source>
        <translation>ユーザー</translation>
    </message>
    <message>
        <source>Tesk never stores the password: it is read from the password file (PGPASSFILE, else ~/.pgpass) or from PGPASSWORD. When the server cannot be reached, results are kept on this computer and sent to it later.</source>
        <translation>Tesk はパスワードを保存しません。パスワードはパスワードファイル (PGPASSFILE、なければ ~/.pgpass) または PGPASSWORD から読み込まれます。サーバーに接続できない間は、結果をこのコンピューターに保存し、後でサーバーに送信します。</translation>
    </message>
    <message>
        <source>Library Roots</source>
        <translation>ライブラリルート</translation>
    </message>
    <message>
        <source>A shared folder under the name every workstation gives it (for example SFX for /mnt/sfx here and S:\ on a Windows workstation): files under it are found by every machine, wherever it mounts the share.</source>
        <translation>すべてのワークステーションで共通の名前を付けた共有フォルダーです (例: このコンピューターの /mnt/sfx と Windows ワークステーションの S:\ をどちらも SFX とする)。その中のファイルは、共有をどこにマウントしたマシンからも見つけられます。</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>名前</translation>
    </message>
    <message>
        <source>Folder on this computer</source>
        <translation>このコンピューター上のフォルダー</translation>
    </message>
    <message>
        <source>Add...</source>
        <translation>追加...</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>削除</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>キャンセル</translation>
    </message>
    <message>
        <source>Name the database of the shared library.</source>
        <translation>共有ライブラリのデータベース名を入力してください。</translation>
    </message>
    <message>
        <source>Give at most %1 library roots.</source>
        <translation>ライブラリルートは %1 個までです。</translation>
    </message>
    <message>
        <source>Select a shared folder</source>
        <translation>共有フォルダーを選択</translation>
    </message>
</context>
<context>
    <name>subFormSearch</name>
    <message>
        <source>Advanced Search Settings</source>
        <translation>詳細検索設定</translation>
    </message>
    <message>
        <source>Use Advanced Search Settings</source>
        <translation>詳細検索設定を使用</translation>
    </message>
    <message>
        <source>Name (partial match)</source>
        <translation>名前（部分一致）</translation>
    </message>
    <message>
        <source>If unspecified, the Name filter will not apply.</source>
        <translation>未指定の場合、名前フィルターは適用されません。</translation>
    </message>
    <message>
        <source>Format</source>
        <translation>フォーマット</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>エラー</translation>
    </message>
    <message>
        <source>Sampling rate</source>
        <translation>サンプリングレート</translation>
    </message>
    <message>
        <source>Channels</source>
        <translation>チャンネル数</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>時間</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>キャンセル</translation>
    </message>
    <message>
        <source>Show only when greater than or equal to</source>
        <translation>以上の場合のみ表示</translation>
    </message>
    <message>
        <source>Show only when less than or equal to</source>
        <translation>以下の場合のみ表示</translation>
    </message>
    <message>
        <source>Show only when equal to</source>
        <translation>等しい場合のみ表示</translation>
    </message>
    <message>
        <source>Description contains</source>
        <translation>説明に含む文字列</translation>
    </message>
    <message>
        <source>Letter case is ignored. If unspecified, this filter will not apply.</source>
        <translation>大文字と小文字は区別しません。指定しない場合、このフィルターは適用されません。</translation>
    </message>
</context>
<context>
    <name>subFormSortSettings</name>
    <message>
        <source>Sort Settings</source>
        <translation>並び順の設定</translation>
    </message>
    <message>
        <source>Use CSV file for sorting</source>
        <translation>CSV ファイルで並べ替える</translation>
    </message>
    <message>
        <source>To import CSV file...</source>
        <translation>CSV ファイルを読み込む...</translation>
    </message>
    <message>
        <source>Show the root of the relative path that the file was written to</source>
        <translation>ファイルに書かれた相対パスの基準となるフォルダー</translation>
    </message>
    <message>
        <source>To select relative path root...</source>
        <translation>相対パスの基準フォルダーを選択...</translation>
    </message>
    <message>
        <source>Ignore first line</source>
        <translation>1 行目を無視</translation>
    </message>
    <message>
        <source>Start Analyzing</source>
        <translation>解析を開始</translation>
    </message>
    <message>
        <source>File Path</source>
        <translation>ファイルパス</translation>
    </message>
    <message>
        <source>Comments</source>
        <translation>コメント</translation>
    </message>
    <message>
        <source>Move to the root folder of the relative path when sorting is applied</source>
        <translation>並び順を適用するとき、相対パスの基準フォルダーへ移動する</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>適用</translation>
    </message>
    <message>
        <source>CSV file</source>
        <translation>CSV ファイル</translation>
    </message>
    <message>
        <source>Relative path root</source>
        <translation>相対パスの基準</translation>
    </message>
    <message>
        <source>File Path column</source>
        <translation>ファイルパスの列</translation>
    </message>
    <message>
        <source>Comments column</source>
        <translation>コメントの列</translation>
    </message>
    <message>
        <source>Import CSV file</source>
        <translation>CSV ファイルの読み込み</translation>
    </message>
    <message>
        <source>Select relative path root</source>
        <translation>相対パスの基準フォルダーを選択</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>エラー</translation>
    </message>
    <message>
        <source>The CSV file could not be found.</source>
        <translation>CSV ファイルが見つかりません。</translation>
    </message>
    <message>
        <source>CSV file analysis failed.</source>
        <translation>CSV ファイルの解析に失敗しました。</translation>
    </message>
    <message>
        <source>No files to reorder.</source>
        <translation>並べ替えるファイルがありません。</translation>
    </message>
    <message>
        <source>If the audio file is written to a relative path, ensure that the &quot;Relative path root&quot; folder in the &quot;Sort Settings&quot; dialog is correctly specified.</source>
        <translation>オーディオファイルが相対パスで書かれている場合は、「並び順の設定」ダイアログの「相対パスの基準」フォルダーが正しく指定されていることを確認してください。</translation>
    </message>
    <message>
        <source>If the audio file is in a subfolder, please click the checkbox &quot;Display all files from subfolders as well&quot; in the View menu.</source>
        <translation>オーディオファイルがサブフォルダーにある場合は、表示メニューの「サブフォルダー内のファイルも表示」にチェックを入れてください。</translation>
    </message>
    <message>
        <source>If the settings are changed, make sure to select &quot;Start Analyzing&quot; again.</source>
        <translation>設定を変更した場合は、もう一度「解析を開始」を押してください。</translation>
    </message>
</context>
<context>
    <name>subFormToolSettings</name>
    <message>
        <source>Tool Settings</source>
        <translation>ツール設定</translation>
    </message>
    <message>
        <source>External Tools</source>
        <translation>外部ツール</translation>
    </message>
    <message>
        <source>Open an .exe or .app file...</source>
        <translation>実行ファイルを開く...</translation>
    </message>
    <message>
        <source>Executable file path</source>
        <translation>実行ファイルのパス</translation>
    </message>
    <message>
        <source>Arguments: file path of the selected waveform is %FILEPATH%</source>
        <translation>引数: 選択した波形ファイルのパスは %FILEPATH%</translation>
    </message>
    <message>
        <source>Seek Settings</source>
        <translation>シーク設定</translation>
    </message>
    <message>
        <source>Set playback time seek range with &apos;R&apos; and &apos;T&apos; keys (msec)</source>
        <translation>&apos;R&apos; キーと &apos;T&apos; キーで移動する再生位置の幅 (ミリ秒)</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>キャンセル</translation>
    </message>
    <message>
        <source>Select external .exe file</source>
        <translation>外部ツールの実行ファイルを選択</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>エラー</translation>
    </message>
    <message>
        <source>Specified .exe file cannot be found. %1</source>
        <translation>指定された実行ファイルが見つかりません。%1</translation>
    </message>
    <message>
        <source>Specified file is not a program that can be run. %1</source>
        <translation>指定されたファイルは実行できるプログラムではありません。%1</translation>
    </message>
    <message>
        <source>Choose the program...</source>
        <translation>プログラムを選択...</translation>
    </message>
    <message>
        <source>Select the external program</source>
        <translation>外部プログラムを選択</translation>
    </message>
    <message>
        <source>Specified program cannot be found. %1</source>
        <translation>指定されたプログラムが見つかりません。%1</translation>
    </message>
    <message>
        <source>Preview</source>
        <translation>プレビュー</translation>
    </message>
    <message>
        <source>Match loudness</source>
        <translation>ラウドネスを揃える</translation>
    </message>
    <message>
        <source>System default</source>
        <translation>システムの既定</translation>
    </message>
    <message>
        <source>Loudness target</source>
        <translation>ターゲットラウドネス</translation>
    </message>
    <message>
        <source>Largest boost</source>
        <translation>最大ブースト</translation>
    </message>
    <message>
        <source>Output device</source>
        <translation>出力デバイス</translation>
    </message>
    <message>
        <source>%1 (not available)</source>
        <translation>%1 (使用不可)</translation>
    </message>
    <message>
        <source>UCS Category List</source>
        <translation>UCSカテゴリーリスト</translation>
    </message>
    <message>
        <source>Open a CSV or TSV file...</source>
        <translation>CSVまたはTSVファイルを開く...</translation>
    </message>
    <message>
        <source>CatID list exported from the UCS spreadsheet (CSV or TSV with CatID, Category and SubCategory columns). Without it, UCS file names still fill the CatID, FX Name, Creator and Source columns.</source>
        <translation>UCSスプレッドシートから書き出したCatIDリスト（CatID、Category、SubCategory列を含むCSVまたはTSV）。指定しなくても、UCS形式のファイル名からCatID、FX名、クリエイター、ソースの列が表示されます。</translation>
    </message>
    <message>
        <source>Select the UCS CatID list</source>
        <translation>UCSのCatIDリストを選択</translation>
    </message>
    <message>
        <source>CSV or TSV files (*.csv *.tsv *.txt);;All files (*)</source>
        <translation>CSV/TSVファイル (*.csv *.tsv *.txt);;すべてのファイル (*)</translation>
    </message>
    <message>
        <source>Specified CatID list cannot be found. %1</source>
        <translation>指定されたCatIDリストが見つかりません。%1</translation>
    </message>
    <message>
        <source>Analysis</source>
        <translation>解析</translation>
    </message>
    <message>
        <source>Files analysed at once (one per processor core at most). Fewer leave more of the computer to other programs while a folder is analysed.</source>
        <translation>同時に解析するファイル数（最大でプロセッサのコア数）。少なくすると、フォルダーの解析中も他のプログラムがコンピューターをより多く使えます。</translation>
    </message>
</context>
</TS>
