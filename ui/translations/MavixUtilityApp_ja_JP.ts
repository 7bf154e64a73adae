<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja_JP">
<context>
    <name>AboutDialog</name>
    <message>
        <source>About</source>
        <translation>バージョン情報</translation>
    </message>
    <message>
        <source>&lt;html&gt;&lt;head/&gt;&lt;body&gt;&lt;p&gt;&lt;span style=&quot; font-size:14pt;&quot;&gt;About Mavix Utility and versions&lt;/span&gt;&lt;/p&gt;&lt;/body&gt;&lt;/html&gt;</source>
        <translation>&lt;html&gt;&lt;head/&gt;&lt;body&gt;&lt;p&gt;&lt;span style=&quot; font-size:14pt;&quot;&gt;Mavix Utility とバージョンについて&lt;/span&gt;&lt;/p&gt;&lt;/body&gt;&lt;/html&gt;</translation>
    </message>
    <message>
        <source>&lt;html&gt;&lt;head/&gt;&lt;body&gt;&lt;p&gt;Home page: &lt;a href=&quot;https://example.com/mavix&quot;&gt;https://example.com/mavix&lt;/a&gt;&lt;/p&gt;&lt;/body&gt;&lt;/html&gt;</source>
        <translation>&lt;html&gt;&lt;head/&gt;&lt;body&gt;&lt;p&gt;ホームページ: &lt;a href=&quot;https://example.com/mavix&quot;&gt;https://example.com/mavix&lt;/a&gt;&lt;/p&gt;&lt;/body&gt;&lt;/html&gt;</translation>
    </message>
    <message>
        <source>This Software uses Qt LGPL. About Qt ...</source>
        <translation>本ソフトウェアは Qt (LGPL) を使用しています。Qt について ...</translation>
    </message>
</context>
<context>
    <name>GeneralTab</name>
    <message>
        <source>Target</source>
        <translation>接続先</translation>
    </message>
    <message>
        <source>IP Address</source>
        <translation>IP アドレス</translation>
    </message>
    <message>
        <source>TCP Port</source>
        <translation>TCP ポート</translation>
    </message>
    <message>
        <source>UDP Port</source>
        <translation>UDP ポート</translation>
    </message>
    <message>
        <source>Read the device&apos;s settings from the running copy, or from the EEPROM copy when EEPROM Access is checked</source>
        <translation>デバイスの設定を動作中の設定から読み出します。EEPROM アクセスがオンのときは EEPROM の設定から読み出します</translation>
    </message>
    <message>
        <source>Read</source>
        <translation>読み出し</translation>
    </message>
    <message>
        <source>Write Setting</source>
        <translation>書き込む設定</translation>
    </message>
    <message>
        <source>Read and write the EEPROM copy, which the device loads when it starts</source>
        <translation>デバイスが起動時に読み込む EEPROM の設定を読み書きします</translation>
    </message>
    <message>
        <source>EEPROM Access</source>
        <translation>EEPROM アクセス</translation>
    </message>
    <message>
        <source>Write the IP address and ports above into the device</source>
        <translation>上の IP アドレスとポートをデバイスに書き込みます</translation>
    </message>
    <message>
        <source>Write</source>
        <translation>書き込み</translation>
    </message>
    <message>
        <source>Device Setting</source>
        <translation>デバイスの設定</translation>
    </message>
    <message>
        <source>Reading Mavix setting is successed</source>
        <translation>Mavix の設定を読み出しました</translation>
    </message>
    <message>
        <source>Response to reading Mavix Setting is timeout</source>
        <translation>Mavix の設定の読み出しに対する応答がタイムアウトしました</translation>
    </message>
    <message>
        <source>Response to writing Mavix Setting is timeout</source>
        <translation>Mavix の設定の書き込みに対する応答がタイムアウトしました</translation>
    </message>
    <message>
        <source>warning</source>
        <translation>警告</translation>
    </message>
    <message>
        <source>It is recommended to enable EEPROM Access and rewrite UDP port. If you want to continue, please select yes as it is.</source>
        <translation>UDP ポートは EEPROM アクセスをオンにして書き換えることをお勧めします。このまま続ける場合は「はい」を選んでください。</translation>
    </message>
    <message>
        <source>Response to obtaining permisssion to write in EEPROM is timeout</source>
        <translation>EEPROM 書き込み許可の取得に対する応答がタイムアウトしました</translation>
    </message>
    <message>
        <source>Response to permisssion release to write in EEPROM is timeout</source>
        <translation>EEPROM 書き込み許可の解除に対する応答がタイムアウトしました</translation>
    </message>
    <message>
        <source>Writing Mavix setting is successed</source>
        <translation>Mavix の設定を書き込みました</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Mavix Utility</source>
        <translation>Mavix Utility</translation>
    </message>
    <message>
        <source>General</source>
        <translation>一般</translation>
    </message>
    <message>
        <source>Control(UDP)</source>
        <translation>制御(UDP)</translation>
    </message>
    <message>
        <source>Data(TCP)</source>
        <translation>データ(TCP)</translation>
    </message>
    <message>
        <source>log</source>
        <translation>ログ</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>ヘルプ</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>エラー</translation>
    </message>
    <message>
        <source>IP address is invalid</source>
        <translation>IP アドレスが不正です</translation>
    </message>
    <message>
        <source>UDP Port number must be 0 to 65535</source>
        <translation>UDP ポート番号は 0 から 65535 で指定してください</translation>
    </message>
    <message>
        <source>TCP Port number must be 0 to 65535</source>
        <translation>TCP ポート番号は 0 から 65535 で指定してください</translation>
    </message>
    <message>
        <source>-target:%1 is ignored: %2</source>
        <translation>-target:%1 は無視されました: %2</translation>
    </message>
    <message>
        <source>%1 | Error:%2</source>
        <translation>%1 | エラー:%2</translation>
    </message>
    <message>
        <source>ZEL-RS232C</source>
        <translation>ZEL-RS232C</translation>
    </message>
    <message>
        <source>ZEL-GPIB</source>
        <translation>ZEL-GPIB</translation>
    </message>
    <message>
        <source>Detail</source>
        <translation>詳細</translation>
    </message>
    <message>
        <source>Server</source>
        <translation>サーバー</translation>
    </message>
</context>
<context>
    <name>MavixSetting</name>
    <message>
        <source>Mavix Setting buffer is too small</source>
        <translation>Mavix の設定データが短すぎます</translation>
    </message>
    <message>
        <source>MAC Address</source>
        <translation>MAC アドレス</translation>
    </message>
    <message>
        <source>IP Address</source>
        <translation>IP アドレス</translation>
    </message>
    <message>
        <source>TCP Data Port</source>
        <translation>TCP データポート</translation>
    </message>
    <message>
        <source>TCP Command Port</source>
        <translation>TCP コマンドポート</translation>
    </message>
    <message>
        <source>UDP Port</source>
        <translation>UDP ポート</translation>
    </message>
    <message>
        <source>TCP Max Segment Size</source>
        <translation>TCP 最大セグメントサイズ</translation>
    </message>
    <message>
        <source>TCP Keep Alive Enabled</source>
        <translation>TCP キープアライブ</translation>
    </message>
    <message>
        <source>enable</source>
        <translation>有効</translation>
    </message>
    <message>
        <source>disable</source>
        <translation>無効</translation>
    </message>
    <message>
        <source>TCP Keep Alive(buffer not empty)</source>
        <translation>TCP キープアライブ(バッファ空でない)</translation>
    </message>
    <message>
        <source>TCP Keep Alive(buffer empty)</source>
        <translation>TCP キープアライブ(バッファ空)</translation>
    </message>
    <message>
        <source>TCP Timeout(Connecting)</source>
        <translation>TCP タイムアウト(接続)</translation>
    </message>
    <message>
        <source>TCP Timeout(Disconnect)</source>
        <translation>TCP タイムアウト(切断)</translation>
    </message>
    <message>
        <source>TCP Re-Connect Interval</source>
        <translation>TCP 再接続間隔</translation>
    </message>
    <message>
        <source>TCP Re-Transmition Timer</source>
        <translation>TCP 再送タイマー</translation>
    </message>
    <message>
        <source>IP address is invalid</source>
        <translation>IP アドレスが不正です</translation>
    </message>
    <message>
        <source>0.0.0.0 is invalid</source>
        <translation>0.0.0.0 は指定できません</translation>
    </message>
    <message>
        <source>255.255.255.255 is invalid</source>
        <translation>255.255.255.255 は指定できません</translation>
    </message>
    <message>
        <source>TCP Port number must be 0 to 65535</source>
        <translation>TCP ポート番号は 0 から 65535 で指定してください</translation>
    </message>
    <message>
        <source>UDP Port number must be 0 to 65535</source>
        <translation>UDP ポート番号は 0 から 65535 で指定してください</translation>
    </message>
</context>
<context>
    <name>OpenFile</name>
    <message>
        <source>Set file name</source>
        <translation>ファイル名を指定してください</translation>
    </message>
    <message>
        <source>File cannot open</source>
        <translation>ファイルを開けません</translation>
    </message>
</context>
<context>
    <name>Startup</name>
    <message>
        <source>Server mode, uiport is invalid</source>
        <translation>サーバーモードの uiport が不正です</translation>
    </message>
</context>
<context>
    <name>TCPOutputOption</name>
    <message>
        <source>Format must include at least one number</source>
        <translation>フォーマットには数字を少なくとも 1 つ含めてください</translation>
    </message>
    <message>
        <source>File cannot open</source>
        <translation>ファイルを開けません</translation>
    </message>
    <message>
        <source>Save To is empty: received data will not be saved.</source>
        <translation>保存先が空です: 受信データは保存されません。</translation>
    </message>
    <message>
        <source>Send file is not chosen.</source>
        <translation>送信ファイルが選ばれていません。</translation>
    </message>
    <message>
        <source>it is a folder</source>
        <translation>フォルダーです</translation>
    </message>
    <message>
        <source>it cannot be written</source>
        <translation>書き込みできません</translation>
    </message>
    <message>
        <source>the folder %1 does not exist</source>
        <translation>フォルダー %1 がありません</translation>
    </message>
    <message>
        <source>no file can be made in %1</source>
        <translation>%1 にファイルを作成できません</translation>
    </message>
</context>
<context>
    <name>TCPRecvInfoDlg</name>
    <message>
        <source>Receive Dialog</source>
        <translation>受信ダイアログ</translation>
    </message>
    <message>
        <source>Recv. Size</source>
        <translation>受信サイズ</translation>
    </message>
    <message>
        <source>Bytes</source>
        <translation>Bytes</translation>
    </message>
    <message>
        <source>Recv. Time</source>
        <translation>受信時間</translation>
    </message>
    <message>
        <source>sec</source>
        <translation>sec</translation>
    </message>
    <message>
        <source>Recv. Rate</source>
        <translation>受信レート</translation>
    </message>
    <message>
        <source>kbps</source>
        <translation>kbps</translation>
    </message>
    <message>
        <source>Show Data</source>
        <translation>データを表示</translation>
    </message>
    <message>
        <source>Show As Hex Format</source>
        <translation>16 進形式で表示</translation>
    </message>
    <message>
        <source>Format</source>
        <translation>フォーマット</translation>
    </message>
    <message>
        <source>Begin Receiving</source>
        <translation>受信開始</translation>
    </message>
    <message>
        <source>Stop Receiving</source>
        <translation>受信停止</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>クリア</translation>
    </message>
    <message>
        <source>Receiving began</source>
        <translation>受信を開始しました</translation>
    </message>
    <message>
        <source>Receiving finished</source>
        <translation>受信を終了しました</translation>
    </message>
</context>
<context>
    <name>TCPSendInfoDlg</name>
    <message>
        <source>Send Dialog</source>
        <translation>送信ダイアログ</translation>
    </message>
    <message>
        <source>Send Size</source>
        <translation>送信サイズ</translation>
    </message>
    <message>
        <source>Bytes</source>
        <translation>Bytes</translation>
    </message>
    <message>
        <source>Send Time</source>
        <translation>送信時間</translation>
    </message>
    <message>
        <source>sec</source>
        <translation>sec</translation>
    </message>
    <message>
        <source>Send Rate</source>
        <translation>送信レート</translation>
    </message>
    <message>
        <source>kbps</source>
        <translation>kbps</translation>
    </message>
    <message>
        <source>Show Data</source>
        <translation>データを表示</translation>
    </message>
    <message>
        <source>Begin Sending</source>
        <translation>送信開始</translation>
    </message>
    <message>
        <source>Stop Sending</source>
        <translation>送信停止</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>クリア</translation>
    </message>
    <message>
        <source>Sending began</source>
        <translation>送信を開始しました</translation>
    </message>
    <message>
        <source>Sending finished</source>
        <translation>送信を終了しました</translation>
    </message>
    <message>
        <source>loss %1 / %2 bytes (%3%)</source>
        <translation>未送信 %1 / %2 バイト (%3%)</translation>
    </message>
</context>
<context>
    <name>TCPTab</name>
    <message>
        <source>Target Device</source>
        <translation>接続先デバイス</translation>
    </message>
    <message>
        <source>Target IP Address</source>
        <translation>接続先 IP アドレス</translation>
    </message>
    <message>
        <source>TCP Port</source>
        <translation>TCP ポート</translation>
    </message>
    <message>
        <source>UDP Port</source>
        <translation>UDP ポート</translation>
    </message>
    <message>
        <source>Receive Setting</source>
        <translation>受信設定</translation>
    </message>
    <message>
        <source>Save To</source>
        <translation>保存先</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>開く</translation>
    </message>
    <message>
        <source>Save As Hex Format File</source>
        <translation>16 進形式のファイルとして保存</translation>
    </message>
    <message>
        <source>Format</source>
        <translation>フォーマット</translation>
    </message>
    <message>
        <source>Receive
Dialog</source>
        <translation>受信
ダイアログ</translation>
    </message>
    <message>
        <source>Send Setting</source>
        <translation>送信設定</translation>
    </message>
    <message>
        <source>Send File</source>
        <translation>送信ファイル</translation>
    </message>
    <message>
        <source>Use Hex Format File</source>
        <translation>16 進形式のファイルを使用</translation>
    </message>
    <message>
        <source>Send
Dialog</source>
        <translation>送信
ダイアログ</translation>
    </message>
    <message>
        <source>Select output to</source>
        <translation>保存先の選択</translation>
    </message>
    <message>
        <source>All format file (*.*)</source>
        <translation>すべてのファイル (*.*)</translation>
    </message>
    <message>
        <source>Choose send file</source>
        <translation>送信ファイルの選択</translation>
    </message>
</context>
<context>
    <name>TCPThread</name>
    <message>
        <source>Fail to connect to device</source>
        <translation>デバイスに接続できません</translation>
    </message>
    <message>
        <source>TCP error occured</source>
        <translation>TCP エラーが発生しました</translation>
    </message>
    <message>
        <source>Send file cannot open</source>
        <translation>送信ファイルを開けません</translation>
    </message>
    <message>
        <source>TCP write is timeout</source>
        <translation>TCP の書き込みがタイムアウトしました</translation>
    </message>
    <message>
        <source>File size does not match the send size.</source>
        <translation>ファイルサイズと送信サイズが一致しません。</translation>
    </message>
    <message>
        <source>Format must include at least one number</source>
        <translation>フォーマットには数字を少なくとも 1 つ含めてください</translation>
    </message>
    <message>
        <source>Receive file cannot open</source>
        <translation>受信ファイルを開けません</translation>
    </message>
    <message>
        <source>Nothing was saved (Save To is empty).</source>
        <translation>何も保存されていません (保存先が空です)。</translation>
    </message>
    <message>
        <source>%1 bytes were saved to %2.</source>
        <translation>%1 バイトを %2 に保存しました。</translation>
    </message>
    <message>
        <source>The device closed the connection.</source>
        <translation>デバイスが接続を閉じました。</translation>
    </message>
    <message>
        <source>no send file is chosen</source>
        <translation>送信ファイルが選ばれていません</translation>
    </message>
    <message>
        <source>Sending %1</source>
        <translation>%1 を送信中</translation>
    </message>
    <message>
        <source>Nothing is being saved: Save To is empty.</source>
        <translation>保存していません: 保存先が空です。</translation>
    </message>
    <message>
        <source>Saving to %1</source>
        <translation>%1 に保存中</translation>
    </message>
    <message>
        <source>Receive file cannot be written</source>
        <translation>受信ファイルに書き込めません</translation>
    </message>
    <message>
        <source>[%1 bytes skipped]</source>
        <translation>[%1 バイトを省略]</translation>
    </message>
</context>
<context>
    <name>UDPTab</name>
    <message>
        <source>Register Address</source>
        <translation>レジスタアドレス</translation>
    </message>
    <message>
        <source>Register address as a hexadecimal number, up to 8 digits</source>
        <translation>レジスタアドレス (16 進数、8 桁まで)</translation>
    </message>
    <message>
        <source>Data Length</source>
        <translation>データ長</translation>
    </message>
    <message>
        <source>Number of bytes, 0 to 255</source>
        <translation>バイト数 (0 から 255)</translation>
    </message>
    <message>
        <source>Read</source>
        <translation>読み出し</translation>
    </message>
    <message>
        <source>Write the hex bytes below, separated by blanks</source>
        <translation>下の 16 進バイト (空白区切り) を書き込みます</translation>
    </message>
    <message>
        <source>Write</source>
        <translation>書き込み</translation>
    </message>
    <message>
        <source>Begin each line of a read with the address of its first byte</source>
        <translation>読み出した各行の先頭にその行の先頭バイトのアドレスを付けます</translation>
    </message>
    <message>
        <source>Show Address</source>
        <translation>アドレスを表示</translation>
    </message>
    <message>
        <source>Set register address 8 character hex number</source>
        <translation>レジスタアドレスは 8 桁の 16 進数で指定してください</translation>
    </message>
    <message>
        <source>Data length must be 0 to 255</source>
        <translation>データ長は 0 から 255 で指定してください</translation>
    </message>
    <message>
        <source>Accessible range is 0x0 to 0xffffffff</source>
        <translation>アクセスできる範囲は 0x0 から 0xffffffff です</translation>
    </message>
    <message>
        <source>UDP read is timeout</source>
        <translation>UDP の読み出しがタイムアウトしました</translation>
    </message>
    <message>
        <source>UDP read successed</source>
        <translation>UDP で読み出しました</translation>
    </message>
    <message>
        <source>Writing in domain after 0xFFFF0000 is not permitted</source>
        <translation>0xFFFF0000 以降の領域への書き込みは許可されていません</translation>
    </message>
    <message>
        <source>Writing in domain after 0xFFFFFFFF is not permitted</source>
        <translation>0xFFFFFFFF を越える書き込みは許可されていません</translation>
    </message>
    <message>
        <source>Written data is specified in hex number with a space</source>
        <translation>書き込むデータは空白で区切った 16 進数で指定してください</translation>
    </message>
    <message>
        <source>Written data length does not match</source>
        <translation>書き込むデータの長さがデータ長と一致しません</translation>
    </message>
    <message>
        <source>UDP writing is timeout</source>
        <translation>UDP の書き込みがタイムアウトしました</translation>
    </message>
    <message>
        <source>UDP writing successed</source>
        <translation>UDP で書き込みました</translation>
    </message>
</context>
<context>
    <name>WrenAgent</name>
    <message>
        <source>UDP socket bind error</source>
        <translation>UDP ソケットのバインドに失敗しました</translation>
    </message>
    <message>
        <source>WREN send, fail to send write command packet</source>
        <translation>WREN 送信: 書き込みコマンドパケットを送信できません</translation>
    </message>
    <message>
        <source>WREN send, fail to send read command packet</source>
        <translation>WREN 送信: 読み出しコマンドパケットを送信できません</translation>
    </message>
    <message>
        <source>WREN send, response to read command is timeout</source>
        <translation>WREN 送信: 読み出しコマンドへの応答がタイムアウトしました</translation>
    </message>
    <message>
        <source>WREN Recv, lack of data packet</source>
        <translation>WREN 受信: データが不足しています</translation>
    </message>
    <message>
        <source>WREN Recv, VerType does is invalid</source>
        <translation>WREN 受信: VerType が不正です</translation>
    </message>
    <message>
        <source>WREN Recv, it&apos;s not Acknowledge packet</source>
        <translation>WREN 受信: 応答パケットではありません</translation>
    </message>
    <message>
        <source>WREN Recv, packet ID does not match</source>
        <translation>WREN 受信: パケット ID が一致しません</translation>
    </message>
    <message>
        <source>WREN Recv, invalid R/W flag</source>
        <translation>WREN 受信: R/W フラグが不正です</translation>
    </message>
    <message>
        <source>WREN Recv, Bus Error occured</source>
        <translation>WREN 受信: バスエラーが発生しました</translation>
    </message>
</context>
</TS>
