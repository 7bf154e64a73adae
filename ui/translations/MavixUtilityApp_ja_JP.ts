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
    <name>CommandInterpreter</name>
    <message>
        <source>Server mode, undefined command</source>
        <translation>サーバーモード: 未定義のコマンドです</translation>
    </message>
    <message>
        <source>Server mode, invalid read command</source>
        <translation>サーバーモード: read コマンドが不正です</translation>
    </message>
    <message>
        <source>Server mode, read command successed</source>
        <translation>サーバーモード: read コマンドが成功しました</translation>
    </message>
    <message>
        <source>Server mode, invalid write command</source>
        <translation>サーバーモード: write コマンドが不正です</translation>
    </message>
    <message>
        <source>Server mode, write command is timeout</source>
        <translation>サーバーモード: write コマンドがタイムアウトしました</translation>
    </message>
    <message>
        <source>Server mode, Mavix device reply bus error</source>
        <translation>サーバーモード: Mavix デバイスがバスエラーを返しました</translation>
    </message>
    <message>
        <source>Server mode, Mavix device won&apos;t reply</source>
        <translation>サーバーモード: Mavix デバイスが応答しません</translation>
    </message>
    <message>
        <source>Server mode, write command successed</source>
        <translation>サーバーモード: write コマンドが成功しました</translation>
    </message>
    <message>
        <source>Server mode, invalid help command</source>
        <translation>サーバーモード: help コマンドが不正です</translation>
    </message>
    <message>
        <source>Server mode, help command successed</source>
        <translation>サーバーモード: help コマンドが成功しました</translation>
    </message>
</context>
<context>
    <name>CommandLine</name>
    <message>
        <source>The device to talk to (default %1:%2:%3); the environment variable %4 sets it too.</source>
        <translation>通信するデバイス (既定値 %1:%2:%3)。環境変数 %4 でも指定できます。</translation>
    </message>
    <message>
        <source>Print each result as one JSON object on a line.</source>
        <translation>結果を 1 行に 1 つの JSON オブジェクトで出力します。</translation>
    </message>
    <message>
        <source>Show this help; after a command, the command&apos;s help.</source>
        <translation>このヘルプを表示します。コマンドの後に付けるとそのコマンドのヘルプを表示します。</translation>
    </message>
    <message>
        <source>Read the EEPROM copy instead of the running copy.</source>
        <translation>動作中の設定ではなく EEPROM の設定を読み出します。</translation>
    </message>
    <message>
        <source>Write the EEPROM copy instead of the running copy.</source>
        <translation>動作中の設定ではなく EEPROM の設定に書き込みます。</translation>
    </message>
    <message>
        <source>Register address, hexadecimal (up to 8 digits).</source>
        <translation>レジスタアドレス (16 進数、8 桁まで)。</translation>
    </message>
    <message>
        <source>Number of bytes, 0 to 255.</source>
        <translation>バイト数 (0 から 255)。</translation>
    </message>
    <message>
        <source>The file.</source>
        <translation>ファイル。</translation>
    </message>
    <message>
        <source>Read LEN bytes at ADDR and print them as a hex dump, 16 bytes a line.</source>
        <translation>ADDR から LEN バイトを読み出し、1 行 16 バイトの 16 進ダンプで出力します。</translation>
    </message>
    <message>
        <source>Write the raw bytes into FILE instead.</source>
        <translation>代わりにバイトをそのまま FILE に書き込みます。</translation>
    </message>
    <message>
        <source>Leave out the address at the head of each line.</source>
        <translation>各行の先頭のアドレスを省きます。</translation>
    </message>
    <message>
        <source>Write hex bytes separated by blanks, or the raw bytes of FILE, at ADDR.</source>
        <translation>空白で区切った 16 進バイト、または FILE の内容をそのまま ADDR に書き込みます。</translation>
    </message>
    <message>
        <source>Allow writes into the top 64 KiB of the address space (expert mode).</source>
        <translation>アドレス空間の最上位 64 KiB への書き込みを許可します (エキスパートモード)。</translation>
    </message>
    <message>
        <source>Hex bytes (01 02 0a ...) or @ and a file name.</source>
        <translation>16 進バイト (01 02 0a ...)、または @ とファイル名。</translation>
    </message>
    <message>
        <source>Show the device&apos;s network settings as the General tab does.</source>
        <translation>デバイスのネットワーク設定を「一般」タブと同じ形で表示します。</translation>
    </message>
    <message>
        <source>Change settings with the checks of the General and Detail tabs and the General tab&apos;s write sequence. Keys: ip, tcp-port, udp-port, command-port, max-segment-size, keep-alive (on or off), keep-alive-busy-ms, keep-alive-idle-ms, connect-timeout-ms, disconnect-timeout-ms, reconnect-interval-ms, retransmission-timer-ms.</source>
        <translation>「一般」タブと「詳細」タブと同じ検査、「一般」タブと同じ書き込み手順で設定を変更します。キー: ip、tcp-port、udp-port、command-port、max-segment-size、keep-alive (on または off)、keep-alive-busy-ms、keep-alive-idle-ms、connect-timeout-ms、disconnect-timeout-ms、reconnect-interval-ms、retransmission-timer-ms。</translation>
    </message>
    <message>
        <source>Go on when the UDP port of the running copy changes (the GUI asks first).</source>
        <translation>動作中の設定の UDP ポートが変わるときもそのまま続けます (GUI では先に確認します)。</translation>
    </message>
    <message>
        <source>A setting and its new value.</source>
        <translation>設定項目とその新しい値。</translation>
    </message>
    <message>
        <source>Receive from the TCP data port into FILE until Ctrl+C or a limit.</source>
        <translation>Ctrl+C または上限まで、TCP データポートから FILE に受信します。</translation>
    </message>
    <message>
        <source>Stop after N bytes; the file keeps exactly N.</source>
        <translation>N バイトで停止します。ファイルにはちょうど N バイトが残ります。</translation>
    </message>
    <message>
        <source>Stop after S seconds.</source>
        <translation>S 秒で停止します。</translation>
    </message>
    <message>
        <source>Send FILE to the TCP data port.</source>
        <translation>FILE を TCP データポートに送信します。</translation>
    </message>
    <message>
        <source>Read a register range again and again and print the lines that changed, until Ctrl+C.</source>
        <translation>Ctrl+C まで、レジスタ範囲を繰り返し読み出して変化した行を出力します。</translation>
    </message>
    <message>
        <source>Time between two reads in milliseconds (default 1000).</source>
        <translation>読み出しの間隔 (ミリ秒、既定値 1000)。</translation>
    </message>
    <message>
        <source>Commands:</source>
        <translation>コマンド:</translation>
    </message>
    <message>
        <source>Reads and writes the registers of a Mavix device, its settings and its TCP data port.</source>
        <translation>Mavix デバイスのレジスタ、設定、TCP データポートを読み書きします。</translation>
    </message>
    <message>
        <source>The command, see below.</source>
        <translation>コマンド (下記参照)。</translation>
    </message>
    <message>
        <source>Exit codes: 0 success, 1 refused input, 2 time-out, 3 bad reply, 4 bus error, 5 connection or file failure, 130 a transfer cut short by Ctrl+C.</source>
        <translation>終了コード: 0 成功、1 入力の拒否、2 タイムアウト、3 不正な応答、4 バスエラー、5 接続またはファイルの失敗、130 Ctrl+C による転送の中断。</translation>
    </message>
    <message>
        <source>&quot;mavix COMMAND --help&quot; describes a command.</source>
        <translation>各コマンドの説明は &quot;mavix COMMAND --help&quot; で表示されます。</translation>
    </message>
    <message>
        <source>Unknown command: %1; see: mavix --help</source>
        <translation>不明なコマンドです: %1 (mavix --help を参照してください)</translation>
    </message>
    <message>
        <source>Wrong number of arguments; see: mavix %1 --help</source>
        <translation>引数の数が正しくありません (mavix %1 --help を参照してください)</translation>
    </message>
    <message>
        <source>--timeout must be a whole number of milliseconds from 1, not %1</source>
        <translation>--timeout には 1 以上のミリ秒を整数で指定してください (指定値: %1)</translation>
    </message>
    <message>
        <source>Time-out of each wait for the device in milliseconds: a register reply; on the data port the connection, a write and the close (default %1).</source>
        <translation>デバイスを待つ時間の上限 (ミリ秒): レジスタの応答、データポートでは接続・書き込み・切断 (既定値 %1)。</translation>
    </message>
    <message>
        <source>Cannot find the host %1: %2</source>
        <translation>ホスト %1 が見つかりません: %2</translation>
    </message>
</context>
<context>
    <name>ExpertTab</name>
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
        <source>Read every setting from the running copy, or from the EEPROM copy when EEPROM Access is checked</source>
        <translation>すべての設定を動作中の設定から読み出します。EEPROM アクセスがチェックされているときは EEPROM の設定から読み出します</translation>
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
        <source>Write every setting on this tab into the device (the MAC address is checked but never written)</source>
        <translation>このタブのすべての設定をデバイスに書き込みます(MAC アドレスは確認のみで書き込まれません)</translation>
    </message>
    <message>
        <source>Write</source>
        <translation>書き込み</translation>
    </message>
    <message>
        <source>Show the factory values in the fields; nothing is sent until you write</source>
        <translation>工場出荷時の値を表示します。書き込むまでデバイスには何も送信されません</translation>
    </message>
    <message>
        <source>Reset</source>
        <translation>リセット</translation>
    </message>
    <message>
        <source>Network</source>
        <translation>ネットワーク</translation>
    </message>
    <message>
        <source>MAC Address</source>
        <translation>MAC アドレス</translation>
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
        <source>TCP</source>
        <translation>TCP</translation>
    </message>
    <message>
        <source>TCP Max Segment Size</source>
        <translation>TCP 最大セグメントサイズ</translation>
    </message>
    <message>
        <source>TCP Keep Alive</source>
        <translation>TCP キープアライブ</translation>
    </message>
    <message>
        <source>disable</source>
        <translation>無効</translation>
    </message>
    <message>
        <source>enable</source>
        <translation>有効</translation>
    </message>
    <message>
        <source>TCP Keep Alive(buffer not empty)</source>
        <translation>TCP キープアライブ(バッファ空でない)</translation>
    </message>
    <message>
        <source>msec</source>
        <translation>ミリ秒</translation>
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
        <source>Please write if you reset Mavix Setting</source>
        <translation>Mavix の設定をリセットする場合は書き込みを行ってください</translation>
    </message>
    <message>
        <source>IP address is invalid</source>
        <translation>IP アドレスが不正です</translation>
    </message>
    <message>
        <source>TCP Port number must be 0 to 65535</source>
        <translation>TCP ポート番号は 0 から 65535 で指定してください</translation>
    </message>
    <message>
        <source>UDP Port number must be 0 to 65535</source>
        <translation>UDP ポート番号は 0 から 65535 で指定してください</translation>
    </message>
    <message>
        <source>Set mac address in format FF:FF:FF:FF:FF:FF</source>
        <translation>MAC アドレスは FF:FF:FF:FF:FF:FF の形式で指定してください</translation>
    </message>
    <message>
        <source>MaxSegmentSize must be 0 to 65535</source>
        <translation>最大セグメントサイズは 0 から 65535 で指定してください</translation>
    </message>
    <message>
        <source>KeepAlive must be 0 to 65535</source>
        <translation>キープアライブは 0 から 65535 で指定してください</translation>
    </message>
    <message>
        <source>TimeOut(Connecting) must be 0 to 65535</source>
        <translation>タイムアウト(接続)は 0 から 65535 で指定してください</translation>
    </message>
    <message>
        <source>TimeOut(Disconnecting) must be 0 to 16677125</source>
        <translation>タイムアウト(切断)は 0 から 16677125 で指定してください</translation>
    </message>
    <message>
        <source>Info: Reading TimeOut(Disconnecting) value will change because the lower 8 bits are ignored</source>
        <translation>情報: 下位 8 ビットは無視されるため、読み出されるタイムアウト(切断)の値は変わります</translation>
    </message>
    <message>
        <source>Reconnect Interval must be 0 to 65535</source>
        <translation>再接続間隔は 0 から 65535 で指定してください</translation>
    </message>
    <message>
        <source>ReTransmission Timer must be 0 to 65535</source>
        <translation>再送タイマーは 0 から 65535 で指定してください</translation>
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
    <message>
        <source>Mavix Setting buffer is too small</source>
        <translation>Mavix の設定データが短すぎます</translation>
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
    <message>
        <source>About</source>
        <translation>バージョン情報</translation>
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
    <name>RCClient</name>
    <message>
        <source>Server to Client, fail to send</source>
        <translation>サーバーからクライアントへの送信に失敗しました</translation>
    </message>
    <message>
        <source>Server mode, quit command successed</source>
        <translation>サーバーモード: quit コマンドが成功しました</translation>
    </message>
</context>
<context>
    <name>RCListener</name>
    <message>
        <source>Server mode, fail to listen</source>
        <translation>サーバーモード: 待ち受けを開始できません</translation>
    </message>
</context>
<context>
    <name>RegisterCommands</name>
    <message>
        <source>Cannot write %1: %2</source>
        <translation>%1 に書き込めません: %2</translation>
    </message>
    <message>
        <source>Cannot read %1: %2</source>
        <translation>%1 を読み込めません: %2</translation>
    </message>
    <message>
        <source>--interval must be a whole number of milliseconds from 1, not %1</source>
        <translation>--interval には 1 以上のミリ秒を整数で指定してください (指定値: %1)</translation>
    </message>
    <message>
        <source>No data to write: give hex bytes or @FILE</source>
        <translation>書き込むデータがありません: 16 進のバイトか @ファイル を指定してください</translation>
    </message>
    <message>
        <source>No file name after @</source>
        <translation>@ の後にファイル名がありません</translation>
    </message>
    <message>
        <source>No data to write: %1 is empty</source>
        <translation>書き込むデータがありません: %1 は空です</translation>
    </message>
</context>
<context>
    <name>ServerTab</name>
    <message>
        <source>Listening on port %1</source>
        <translation>ポート %1 で待ち受けています</translation>
    </message>
    <message>
        <source>Server mode, fail to listen</source>
        <translation>サーバーモード: 待ち受けを開始できません</translation>
    </message>
    <message>
        <source>Connection ID: %1</source>
        <translation>接続 ID: %1</translation>
    </message>
    <message>
        <source>Disconnect %1</source>
        <translation>切断 %1</translation>
    </message>
    <message>
        <source>Client %1: %2</source>
        <translation>クライアント %1: %2</translation>
    </message>
</context>
<context>
    <name>SettingsCommands</name>
    <message>
        <source>Unknown setting %1; the settings are %2</source>
        <translation>不明な設定項目です: %1 (設定項目は %2 です)</translation>
    </message>
    <message>
        <source>keep-alive must be on or off, not %1</source>
        <translation>keep-alive には on または off を指定してください (指定値: %1)</translation>
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
    <name>TransferCommand</name>
    <message>
        <source>--%1 must be a whole number from 1, not %2</source>
        <translation>--%1 には 1 以上の整数を指定してください (指定値: %2)</translation>
    </message>
    <message>
        <source>%1 bytes  %2 s  %3 MB/s</source>
        <translation>%1 バイト  %2 秒  %3 MB/s</translation>
    </message>
    <message>
        <source>%1 / %2 bytes  %3 s  %4 MB/s</source>
        <translation>%1 / %2 バイト  %3 秒  %4 MB/s</translation>
    </message>
    <message>
        <source>ETA %1 s</source>
        <translation>残り %1 秒</translation>
    </message>
    <message>
        <source>%1 bytes received into %2 in %3 s (%4 MB/s)</source>
        <translation>%1 バイトを %3 秒で %2 に受信しました (%4 MB/s)</translation>
    </message>
    <message>
        <source>%1 of %2 bytes sent from %3 in %4 s (%5 MB/s)</source>
        <translation>%3 の %2 バイトのうち %1 バイトを %4 秒で送信しました (%5 MB/s)</translation>
    </message>
    <message>
        <source>Only %1 of %2 bytes received</source>
        <translation>%2 バイト中 %1 バイトしか受信できませんでした</translation>
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
    <message>
        <source> (%1 bytes typed, Data Length %2)</source>
        <translation> (入力 %1 バイト、データ長 %2)</translation>
    </message>
    <message>
        <source>: &quot;%1&quot; is not a hexadecimal byte</source>
        <translation>: &quot;%1&quot; は 16 進のバイトではありません</translation>
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
    <message>
        <source>Another register access is waiting; this one was not sent</source>
        <translation>別のレジスタアクセスが応答待ちのため、このアクセスは送信されませんでした</translation>
    </message>
    <message>
        <source>no target UDP port is set</source>
        <translation>接続先の UDP ポートが設定されていません</translation>
    </message>
    <message>
        <source>The request could not be sent: %1</source>
        <translation>要求を送信できませんでした: %1</translation>
    </message>
    <message>
        <source>The wait for the reply was given up</source>
        <translation>応答待ちを中止しました</translation>
    </message>
    <message numerus="yes">
        <source>%n datagram(s) discarded: %1</source>
        <translation>
            <numerusform>%n 個のデータグラムを破棄しました: %1</numerusform>
        </translation>
    </message>
    <message>
        <source>WREN Recv, datagram from %1 port %2 is not from the target</source>
        <translation>WREN 受信: %1 ポート %2 からのデータグラムは接続先からのものではありません</translation>
    </message>
    <message>
        <source>WREN Recv, datagram too short for a header</source>
        <translation>WREN 受信: データグラムがヘッダーより短いです</translation>
    </message>
    <message>
        <source>WREN Recv, address does not match</source>
        <translation>WREN 受信: アドレスが一致しません</translation>
    </message>
    <message>
        <source>WREN Recv, length does not match the request</source>
        <translation>WREN 受信: データ長が要求と一致しません</translation>
    </message>
    <message>
        <source>WREN Recv, bad reply</source>
        <translation>WREN 受信: 不正な応答です</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <translation>%1（%2）</translation>
    </message>
</context>
<context>
    <name>ZELGPIBTab</name>
    <message>
        <source>Module Setting</source>
        <translation>モジュールの設定</translation>
    </message>
    <message>
        <source>Controller GPIB Address</source>
        <translation>コントローラの GPIB アドレス</translation>
    </message>
    <message>
        <source>Read</source>
        <translation>読み出し</translation>
    </message>
    <message>
        <source>Timeout</source>
        <translation>タイムアウト</translation>
    </message>
    <message>
        <source>msec</source>
        <translation>msec</translation>
    </message>
    <message>
        <source>Write</source>
        <translation>書き込み</translation>
    </message>
    <message>
        <source>Bus</source>
        <translation>バス</translation>
    </message>
    <message>
        <source>Connect</source>
        <translation>接続</translation>
    </message>
    <message>
        <source>Interface Clear: leaves every talker and listener on the bus unaddressed</source>
        <translation>インターフェースクリア: バス上のすべてのトーカーとリスナーのアドレス指定を解除します</translation>
    </message>
    <message>
        <source>Interface Clear</source>
        <translation>インターフェースクリア</translation>
    </message>
    <message>
        <source>Target GPIB Address</source>
        <translation>接続先の GPIB アドレス</translation>
    </message>
    <message>
        <source>Delimiter</source>
        <translation>デリミタ</translation>
    </message>
    <message>
        <source>(Ignore)</source>
        <translation>(なし)</translation>
    </message>
    <message>
        <source>Send</source>
        <translation>送信</translation>
    </message>
    <message>
        <source>Command</source>
        <translation>コマンド</translation>
    </message>
    <message>
        <source>Receive</source>
        <translation>受信</translation>
    </message>
    <message>
        <source>Max Receive Length</source>
        <translation>最大受信長</translation>
    </message>
    <message>
        <source>Show As Hex</source>
        <translation>16 進で表示</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>クリア</translation>
    </message>
    <message>
        <source>UDP read is timeout</source>
        <translation>UDP の読み出しがタイムアウトしました</translation>
    </message>
    <message>
        <source>Read ZEL-GPIB setting is invalid</source>
        <translation>読み出した ZEL-GPIB の設定が不正です</translation>
    </message>
    <message>
        <source>Reading ZEL-GPIB setting successed</source>
        <translation>ZEL-GPIB の設定を読み出しました</translation>
    </message>
    <message>
        <source>Controller GPIB address must be 0 to 30</source>
        <translation>コントローラの GPIB アドレスは 0 から 30 で指定してください</translation>
    </message>
    <message>
        <source>Timeout must be 0 to 655350</source>
        <translation>タイムアウトは 0 から 655350 で指定してください</translation>
    </message>
    <message>
        <source>Response to obtaining permisssion to write in EEPROM is timeout</source>
        <translation>EEPROM 書き込み許可の取得に対する応答がタイムアウトしました</translation>
    </message>
    <message>
        <source>UDP write is timeout</source>
        <translation>UDP の書き込みがタイムアウトしました</translation>
    </message>
    <message>
        <source>Response to permisssion release to write in EEPROM is timeout</source>
        <translation>EEPROM 書き込み許可の解除に対する応答がタイムアウトしました</translation>
    </message>
    <message>
        <source>Writing ZEL-GPIB setting successed</source>
        <translation>ZEL-GPIB の設定を書き込みました</translation>
    </message>
    <message>
        <source>Fail to connect to device</source>
        <translation>デバイスに接続できません</translation>
    </message>
    <message>
        <source>Disconnect</source>
        <translation>切断</translation>
    </message>
    <message>
        <source>ZEL-GPIB connect successed</source>
        <translation>ZEL-GPIB に接続しました</translation>
    </message>
    <message>
        <source>ZEL-GPIB disconnect successed</source>
        <translation>ZEL-GPIB から切断しました</translation>
    </message>
    <message>
        <source>Target GPIB address must be 0 to 30</source>
        <translation>接続先の GPIB アドレスは 0 から 30 で指定してください</translation>
    </message>
    <message>
        <source>GPIB command is empty</source>
        <translation>GPIB コマンドが空です</translation>
    </message>
    <message>
        <source>GPIB sending successed</source>
        <translation>GPIB で送信しました</translation>
    </message>
    <message>
        <source>GPIB receiving successed</source>
        <translation>GPIB で受信しました</translation>
    </message>
    <message>
        <source>GPIB Interface Clear successed</source>
        <translation>GPIB インターフェースクリアを実行しました</translation>
    </message>
    <message>
        <source>GPIB timeout</source>
        <translation>GPIB がタイムアウトしました</translation>
    </message>
    <message>
        <source>GPIB error packet</source>
        <translation>GPIB エラーパケットを受信しました</translation>
    </message>
    <message>
        <source>GPIB undefined error</source>
        <translation>GPIB で未定義のエラーが発生しました</translation>
    </message>
</context>
<context>
    <name>ZELRS232CTab</name>
    <message>
        <source>Serial Setting</source>
        <translation>シリアル設定</translation>
    </message>
    <message>
        <source>DTE / DCE</source>
        <translation>DTE / DCE</translation>
    </message>
    <message>
        <source>Baud Rate</source>
        <translation>ボーレート</translation>
    </message>
    <message>
        <source>Data Width</source>
        <translation>データ長</translation>
    </message>
    <message>
        <source>bit</source>
        <translation>ビット</translation>
    </message>
    <message>
        <source>Stop Bit</source>
        <translation>ストップビット</translation>
    </message>
    <message>
        <source>Parity</source>
        <translation>パリティ</translation>
    </message>
    <message>
        <source>None</source>
        <translation>なし</translation>
    </message>
    <message>
        <source>Mark</source>
        <translation>マーク</translation>
    </message>
    <message>
        <source>Space</source>
        <translation>スペース</translation>
    </message>
    <message>
        <source>Odd</source>
        <translation>奇数</translation>
    </message>
    <message>
        <source>Even</source>
        <translation>偶数</translation>
    </message>
    <message>
        <source>Flow Control Type</source>
        <translation>フロー制御</translation>
    </message>
    <message>
        <source>Wait DSR/CTS</source>
        <translation>DSR/CTS を待つ</translation>
    </message>
    <message>
        <source>TCP Port</source>
        <translation>TCP ポート</translation>
    </message>
    <message>
        <source>EEPROM Access</source>
        <translation>EEPROM アクセス</translation>
    </message>
    <message>
        <source>Read</source>
        <translation>読み出し</translation>
    </message>
    <message>
        <source>Write</source>
        <translation>書き込み</translation>
    </message>
    <message>
        <source>Connect</source>
        <translation>接続</translation>
    </message>
    <message>
        <source>Data</source>
        <translation>データ</translation>
    </message>
    <message>
        <source>Delimiter</source>
        <translation>区切り文字</translation>
    </message>
    <message>
        <source>(Ignore)</source>
        <translation>(無視)</translation>
    </message>
    <message>
        <source>CR</source>
        <translation>CR</translation>
    </message>
    <message>
        <source>LF</source>
        <translation>LF</translation>
    </message>
    <message>
        <source>CR+LF</source>
        <translation>CR+LF</translation>
    </message>
    <message>
        <source>Send Data(ASCII)</source>
        <translation>送信データ(ASCII)</translation>
    </message>
    <message>
        <source>Send</source>
        <translation>送信</translation>
    </message>
    <message>
        <source>Received Data</source>
        <translation>受信データ</translation>
    </message>
    <message>
        <source>Show As Hex</source>
        <translation>16 進で表示</translation>
    </message>
    <message>
        <source>Max Receive Length</source>
        <translation>最大受信長</translation>
    </message>
    <message>
        <source>Bytes</source>
        <translation>バイト</translation>
    </message>
    <message>
        <source>Receive</source>
        <translation>受信</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>クリア</translation>
    </message>
    <message>
        <source>Read ZEL-RS232C setting is invalid</source>
        <translation>読み込んだ ZEL-RS232C の設定が不正です</translation>
    </message>
    <message>
        <source>Reading ZEL-RS232C setting is successed</source>
        <translation>ZEL-RS232C の設定を読み込みました</translation>
    </message>
    <message>
        <source>TCP Port number must be 0 to 65535</source>
        <translation>TCP ポート番号は 0 から 65535 で指定してください</translation>
    </message>
    <message>
        <source>Writing ZEL-RS232C setting is successed</source>
        <translation>ZEL-RS232C の設定を書き込みました</translation>
    </message>
    <message>
        <source>ZEL-RS232C timeout</source>
        <translation>ZEL-RS232C がタイムアウトしました</translation>
    </message>
    <message>
        <source>ZEL-RS232C undefined error</source>
        <translation>ZEL-RS232C で不明なエラーが発生しました</translation>
    </message>
    <message>
        <source>Manual</source>
        <translation>手動</translation>
    </message>
    <message>
        <source>Auto(Ignore CTS)</source>
        <translation>自動(CTS を無視)</translation>
    </message>
    <message>
        <source>Auto(Consider CTS)</source>
        <translation>自動(CTS を考慮)</translation>
    </message>
    <message>
        <source>Auto(Ignore RTS)</source>
        <translation>自動(RTS を無視)</translation>
    </message>
    <message>
        <source>Auto(Consider RTS)</source>
        <translation>自動(RTS を考慮)</translation>
    </message>
    <message>
        <source>Wait DTR/RTS</source>
        <translation>DTR/RTS を待つ</translation>
    </message>
    <message>
        <source>Disconnect</source>
        <translation>切断</translation>
    </message>
    <message>
        <source>ZEL-RS232C disconnect successed</source>
        <translation>ZEL-RS232C を切断しました</translation>
    </message>
    <message>
        <source>Fail to connect to device</source>
        <translation>デバイスに接続できません</translation>
    </message>
    <message>
        <source>ZEL-RS232C connect successed</source>
        <translation>ZEL-RS232C に接続しました</translation>
    </message>
    <message>
        <source>ZEL-RS232C data is empty</source>
        <translation>ZEL-RS232C の送信データが空です</translation>
    </message>
    <message>
        <source>ZEL-RS232C sending successed</source>
        <translation>ZEL-RS232C で送信しました</translation>
    </message>
    <message>
        <source>ZEL-RS232C is not connected</source>
        <translation>ZEL-RS232C に接続していません</translation>
    </message>
    <message>
        <source>ZEL-RS232C receiving successed</source>
        <translation>ZEL-RS232C で受信しました</translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>Cannot open the log file %1: %2</source>
        <translation>ログファイル %1 を開けません: %2</translation>
    </message>
</context>
</TS>
