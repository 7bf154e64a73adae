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
    <name>AllowRule</name>
    <message>
        <source>loopback</source>
        <translation>ループバック</translation>
    </message>
</context>
<context>
    <name>CommandContext</name>
    <message>
        <source>--max must be a whole number of bytes from 1, not %1</source>
        <translation>--max は 1 以上の整数のバイト数で指定してください (%1 は不可)</translation>
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
        <source>Load a register map beside the built-in one (repeatable); the environment variable %1 names more, separated by &apos;:&apos;.</source>
        <translation>組み込みのマップに加えてレジスタマップを読み込みます (複数指定可)。環境変数 %1 でも &apos;:&apos; 区切りで指定できます。</translation>
    </message>
    <message>
        <source>A file written by mavix dump.</source>
        <translation>mavix dump が書いたファイル。</translation>
    </message>
    <message>
        <source>List the register map: blocks, registers and fields, all or those that match.</source>
        <translation>レジスタマップ (ブロック、レジスタ、フィールド) を、すべてまたは一致するものだけ一覧表示します。</translation>
    </message>
    <message>
        <source>A block or register name, or a pattern with * and ?.</source>
        <translation>ブロック名かレジスタ名、または * と ? を使ったパターン。</translation>
    </message>
    <message>
        <source>Read registers by name and show their values and fields decoded.</source>
        <translation>レジスタを名前で読み出し、値とフィールドを解釈して表示します。</translation>
    </message>
    <message>
        <source>A register or field name, as mavix regs lists them.</source>
        <translation>mavix regs が表示するレジスタ名またはフィールド名。</translation>
    </message>
    <message>
        <source>Change fields (or whole registers) by read-modify-write: one read and one write per register.</source>
        <translation>フィールド (またはレジスタ全体) をリード・モディファイ・ライトで変更します。レジスタごとに読み出し 1 回、書き込み 1 回です。</translation>
    </message>
    <message>
        <source>A field or register and its new value: a number or one of its named values.</source>
        <translation>フィールドまたはレジスタと新しい値 (数値または名前付きの値)。</translation>
    </message>
    <message>
        <source>Read every readable register (or those that match) and print them as a snapshot file.</source>
        <translation>読み出し可能なすべてのレジスタ (または一致するもの) を読み出し、スナップショットファイルとして出力します。</translation>
    </message>
    <message>
        <source>Show the registers whose values on the device differ from a snapshot.</source>
        <translation>デバイス上の値がスナップショットと異なるレジスタを表示します。</translation>
    </message>
    <message>
        <source>Write a snapshot&apos;s writable registers back to the device (asks first).</source>
        <translation>スナップショットの書き込み可能なレジスタをデバイスに書き戻します (先に確認します)。</translation>
    </message>
    <message>
        <source>Write without asking.</source>
        <translation>確認せずに書き込みます。</translation>
    </message>
    <message>
        <source>Drive the ZEL-GPIB bridge module on the TCP data port: show or change its settings (keys: controller, timeout-ms), send TEXT to the instrument at GPIB address ADDR, receive its answer, query (send, then receive), or clear the bus (Interface Clear). The answer goes to standard output.</source>
        <translation>TCP データポート上の ZEL-GPIB ブリッジモジュールを操作します: 設定の表示・変更 (キー: controller, timeout-ms)、GPIB アドレス ADDR の測定器への TEXT の送信、その応答の受信、問い合わせ (送信してから受信)、バスのクリア (インターフェースクリア)。応答は標準出力に出力します。</translation>
    </message>
    <message>
        <source>What ends a message sent and an answer received: crlf (default), cr, lf or none (the END signal alone).</source>
        <translation>送信するメッセージと受信する応答の終わり: crlf (既定)、cr、lf、none (END 信号のみ)。</translation>
    </message>
    <message>
        <source>Stop receiving after N bytes (default: END, the delimiter or 1 MiB).</source>
        <translation>N バイトで受信を終えます (既定: END、デリミタ、または 1 MiB)。</translation>
    </message>
    <message>
        <source>The module&apos;s own GPIB address (default: read from the module&apos;s settings).</source>
        <translation>モジュール自身の GPIB アドレス (既定: モジュールの設定から読み出します)。</translation>
    </message>
    <message>
        <source>Print the answer as hex bytes.</source>
        <translation>応答を 16 進のバイトで出力します。</translation>
    </message>
    <message>
        <source>settings, set, query, send, recv or clear.</source>
        <translation>settings、set、query、send、recv、clear のいずれか。</translation>
    </message>
    <message>
        <source>Drive the ZEL-RS232C serial bridge module: show or change its format, flow control, lines and ports (keys: baud, data-bits, stop-bits, parity, dte-flow, dce-flow, dte-wait, dce-wait, dte-port, dce-port, rts, dtr, cts, ri, dsr, cd), send to a connector (TEXT, the bytes of FILE, or standard input), receive what it delivered, or print what arrives until Ctrl+C.</source>
        <translation>ZEL-RS232C シリアルブリッジモジュールを操作します: 通信形式、フロー制御、信号線、ポートの表示・変更 (キー: baud, data-bits, stop-bits, parity, dte-flow, dce-flow, dte-wait, dce-wait, dte-port, dce-port, rts, dtr, cts, ri, dsr, cd)、コネクタへの送信 (TEXT、FILE の内容、または標準入力)、届いたデータの受信、Ctrl+C まで届くデータの出力。</translation>
    </message>
    <message>
        <source>Read or write the EEPROM copy of the settings instead of the running copy.</source>
        <translation>動作中の設定ではなく EEPROM の設定を読み書きします。</translation>
    </message>
    <message>
        <source>Receive at most N bytes (default: what has arrived, up to 1 MiB).</source>
        <translation>最大 N バイトを受信します (既定: 届いている分、最大 1 MiB)。</translation>
    </message>
    <message>
        <source>Print what arrives as hex bytes.</source>
        <translation>届いたデータを 16 進のバイトで出力します。</translation>
    </message>
    <message>
        <source>settings, set, send, recv or monitor.</source>
        <translation>settings、set、send、recv、monitor のいずれか。</translation>
    </message>
    <message>
        <source>Cannot find the host %1: %2</source>
        <translation>ホスト %1 が見つかりません: %2</translation>
    </message>
    <message>
        <source>Print one CSV row a change (time, seconds since the start, address, value in hex) under a header line.</source>
        <translation>変化ごとに CSV を 1 行出力します (時刻、開始からの秒数、アドレス、16 進の値)。先頭に見出し行を付けます。</translation>
    </message>
</context>
<context>
    <name>DeviceMap</name>
    <message>
        <source>Flag byte</source>
        <translation>フラグバイト</translation>
    </message>
    <message>
        <source>MAC address</source>
        <translation>MAC アドレス</translation>
    </message>
    <message>
        <source>IPv4 address</source>
        <translation>IPv4 アドレス</translation>
    </message>
    <message>
        <source>TCP data port; with ZEL-RS232C, the DTE connector&apos;s port</source>
        <translation>TCP データポート。ZEL-RS232C では DTE コネクタのポート</translation>
    </message>
    <message>
        <source>TCP command port; with ZEL-RS232C, the DCE connector&apos;s port</source>
        <translation>TCP コマンドポート。ZEL-RS232C では DCE コネクタのポート</translation>
    </message>
    <message>
        <source>TCP max segment size</source>
        <translation>TCP 最大セグメントサイズ</translation>
    </message>
    <message>
        <source>UDP port</source>
        <translation>UDP ポート</translation>
    </message>
    <message>
        <source>TCP keep-alive while the send buffer is not empty, ms</source>
        <translation>送信バッファが空でないときの TCP キープアライブ (ミリ秒)</translation>
    </message>
    <message>
        <source>TCP keep-alive while the send buffer is empty, ms</source>
        <translation>送信バッファが空のときの TCP キープアライブ (ミリ秒)</translation>
    </message>
    <message>
        <source>TCP time-out, connecting, ms</source>
        <translation>TCP タイムアウト、接続 (ミリ秒)</translation>
    </message>
    <message>
        <source>TCP time-out, disconnect, in units of 256 ms</source>
        <translation>TCP タイムアウト、切断 (256 ミリ秒単位)</translation>
    </message>
    <message>
        <source>TCP re-connect interval, ms</source>
        <translation>TCP 再接続間隔 (ミリ秒)</translation>
    </message>
    <message>
        <source>TCP re-transmission timer, ms</source>
        <translation>TCP 再送タイマ (ミリ秒)</translation>
    </message>
    <message>
        <source>EEPROM write permission</source>
        <translation>EEPROM 書き込み許可</translation>
    </message>
    <message>
        <source>Line states, byte 0 DTE, byte 1 DCE; 0 = on</source>
        <translation>信号線の状態。バイト 0 が DTE、バイト 1 が DCE、0 = オン</translation>
    </message>
    <message>
        <source>Settings image, running copy</source>
        <translation>設定イメージ、動作中のコピー</translation>
    </message>
    <message>
        <source>Settings image, EEPROM copy</source>
        <translation>設定イメージ、EEPROM のコピー</translation>
    </message>
    <message>
        <source>ZEL-RS232C serial bridge</source>
        <translation>ZEL-RS232C シリアルブリッジ</translation>
    </message>
    <message>
        <source>Serial configuration, running copy</source>
        <translation>シリアル設定、動作中のコピー</translation>
    </message>
    <message>
        <source>Serial configuration, EEPROM copy</source>
        <translation>シリアル設定、EEPROM のコピー</translation>
    </message>
    <message>
        <source>ZEL-GPIB bridge settings</source>
        <translation>ZEL-GPIB ブリッジの設定</translation>
    </message>
    <message>
        <source>Controller address, 0 to 30</source>
        <translation>コントローラアドレス (0 から 30)</translation>
    </message>
    <message>
        <source>Bus time-out in units of 10 ms</source>
        <translation>バスタイムアウト (10 ミリ秒単位)</translation>
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
    <name>FileSender</name>
    <message>
        <source>no send file is chosen</source>
        <translation>送信ファイルが選ばれていません</translation>
    </message>
    <message>
        <source>Send file cannot open</source>
        <translation>送信ファイルを開けません</translation>
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
    <name>GpibBridge</name>
    <message>
        <source>Target GPIB address must be 0 to 30</source>
        <translation>接続先の GPIB アドレスは 0 から 30 で指定してください</translation>
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
        <source>UDP write is timeout</source>
        <translation>UDP の書き込みがタイムアウトしました</translation>
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
        <source>ZEL-GPIB connect successed</source>
        <translation>ZEL-GPIB に接続しました</translation>
    </message>
    <message>
        <source>ZEL-GPIB disconnect successed</source>
        <translation>ZEL-GPIB から切断しました</translation>
    </message>
    <message>
        <source>GPIB sending successed</source>
        <translation>GPIB で送信しました</translation>
    </message>
    <message>
        <source>Receiving stopped at %1 bytes; the rest stays with the talker</source>
        <translation>受信を %1 バイトで止めました。残りはトーカーに残っています</translation>
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
    <message>
        <source>GPIB reply does not belong to the request</source>
        <translation>GPIB の応答が要求に対応していません</translation>
    </message>
</context>
<context>
    <name>GpibCommand</name>
    <message>
        <source>Unknown setting %1; the settings are controller, timeout-ms</source>
        <translation>不明な設定 %1 です。設定は controller、timeout-ms です</translation>
    </message>
    <message>
        <source>Unknown or incomplete gpib command; see: mavix gpib --help</source>
        <translation>gpib コマンドが不明か不完全です。mavix gpib --help を参照してください</translation>
    </message>
    <message>
        <source>--delimiter must be crlf, cr, lf or none, not %1</source>
        <translation>--delimiter は crlf、cr、lf、none のいずれかで指定してください (%1 は不可)</translation>
    </message>
</context>
<context>
    <name>IpxactImport</name>
    <message>
        <source>%1 is not a number from 0 to %2</source>
        <translation>%1 は 0 から %2 までの数値ではありません</translation>
    </message>
    <message>
        <source>Unknown access &quot;%1&quot;</source>
        <translation>不明なアクセス &quot;%1&quot;</translation>
    </message>
    <message>
        <source>Register size of %1 bits is not whole bytes</source>
        <translation>レジスタサイズ %1 ビットはバイト単位ではありません</translation>
    </message>
    <message>
        <source>No address block found</source>
        <translation>アドレスブロックがありません</translation>
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
    <message>
        <source>Registers</source>
        <translation>レジスタ</translation>
    </message>
</context>
<context>
    <name>MapCommands</name>
    <message>
        <source>No register matches %1</source>
        <translation>%1 に一致するレジスタはありません</translation>
    </message>
    <message>
        <source>%1 is write-only</source>
        <translation>%1 は書き込み専用です</translation>
    </message>
    <message>
        <source>%1 is not NAME=VALUE</source>
        <translation>%1 は NAME=VALUE の形ではありません</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>No readable register matches %1</source>
        <translation>%1 に一致する読み出し可能なレジスタはありません</translation>
    </message>
    <message>
        <source>Register values of %1 at %2</source>
        <translation>%1 のレジスタ値 (%2)</translation>
    </message>
    <message>
        <source>Registers changed since the snapshot: %1</source>
        <translation>スナップショット以降に変化したレジスタ: %1</translation>
    </message>
    <message>
        <source>Write %1 registers to %2? [y/N]</source>
        <translation>%1 個のレジスタを %2 に書き込みますか? [y/N]</translation>
    </message>
    <message>
        <source>Nothing written</source>
        <translation>何も書き込みませんでした</translation>
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
    <name>PlotWidget</name>
    <message>
        <source>%1 s</source>
        <translation>%1 秒</translation>
    </message>
</context>
<context>
    <name>PythonDevice</name>
    <message>
        <source>The data must be bytes, not text</source>
        <translation>データはテキストではなく bytes で指定してください</translation>
    </message>
    <message>
        <source>The address %1 is outside 0 to 0xFFFFFFFF</source>
        <translation>アドレス %1 が 0 から 0xFFFFFFFF の範囲外です</translation>
    </message>
    <message>
        <source>%1 must be a number above 0, not %2</source>
        <translation>%1 には 0 より大きい数値を指定してください (%2 ではありません)</translation>
    </message>
    <message>
        <source>timeout_ms must be a whole number from 1, not %1</source>
        <translation>timeout_ms には 1 以上の整数を指定してください (%1 ではありません)</translation>
    </message>
    <message>
        <source>Unknown setting %1; the settings are %2</source>
        <translation>不明な設定項目です: %1 (設定項目は %2 です)</translation>
    </message>
</context>
<context>
    <name>PythonGpib</name>
    <message>
        <source>The GPIB operation failed</source>
        <translation>GPIB の操作に失敗しました</translation>
    </message>
    <message>
        <source>delimiter must be crlf, cr, lf or none, not %1</source>
        <translation>delimiter には crlf, cr, lf, none のいずれかを指定してください (%1 ではありません)</translation>
    </message>
</context>
<context>
    <name>PythonSerial</name>
    <message>
        <source>The connector is dte or dce, not %1</source>
        <translation>コネクタは dte または dce です (%1 ではありません)</translation>
    </message>
    <message>
        <source>The ZEL-RS232C operation failed</source>
        <translation>ZEL-RS232C の操作に失敗しました</translation>
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
    <name>RCServer</name>
    <message>
        <source>Refused %1: not an allowed address</source>
        <translation>%1 を拒否しました: 許可されていないアドレスです</translation>
    </message>
    <message>
        <source>Refused %1: too many clients</source>
        <translation>%1 を拒否しました: クライアントが多すぎます</translation>
    </message>
    <message>
        <source>Connection ID: %1</source>
        <translation>接続 ID: %1</translation>
    </message>
    <message>
        <source>Peer address: %1</source>
        <translation>接続元アドレス: %1</translation>
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
    <name>RecvStream</name>
    <message>
        <source>Nothing is being saved: Save To is empty.</source>
        <translation>保存していません: 保存先が空です。</translation>
    </message>
    <message>
        <source>Saving to %1</source>
        <translation>%1 に保存中</translation>
    </message>
    <message>
        <source>Receive file cannot open</source>
        <translation>受信ファイルを開けません</translation>
    </message>
    <message>
        <source>The device closed the connection.</source>
        <translation>デバイスが接続を閉じました。</translation>
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
        <source>Receive file cannot be written</source>
        <translation>受信ファイルに書き込めません</translation>
    </message>
    <message>
        <source>[%1 bytes skipped]</source>
        <translation>[%1 バイトを省略]</translation>
    </message>
</context>
<context>
    <name>RegisterCatalog</name>
    <message>
        <source>%1 (with the maps already loaded)</source>
        <translation>%1 (読み込み済みのマップとの間で)</translation>
    </message>
    <message>
        <source>Register %1 has no field %2</source>
        <translation>レジスタ %1 にフィールド %2 はありません</translation>
    </message>
    <message>
        <source>No register is named %1; see: mavix regs</source>
        <translation>%1 という名前のレジスタはありません。mavix regs を参照してください</translation>
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
    <name>RegisterIo</name>
    <message>
        <source>%1 is read-only</source>
        <translation>%1 は読み出し専用です</translation>
    </message>
    <message>
        <source>%1.%2 is read-only</source>
        <translation>%1.%2 は読み出し専用です</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
</context>
<context>
    <name>RegisterMap</name>
    <message>
        <source>Register name &quot;%1&quot; is not a name (letters, digits and _)</source>
        <translation>レジスタ名 &quot;%1&quot; は名前として使えません (英字、数字、_)</translation>
    </message>
    <message>
        <source>Register %1.%2: size %3 is not 1 to 8 bytes</source>
        <translation>レジスタ %1.%2: サイズ %3 は 1 から 8 バイトではありません</translation>
    </message>
    <message>
        <source>Register %1.%2 lies beyond the 32-bit address space</source>
        <translation>レジスタ %1.%2 は 32 ビットのアドレス空間を超えています</translation>
    </message>
    <message>
        <source>Register %1.%2: reset value does not fit %3 bytes</source>
        <translation>レジスタ %1.%2: リセット値が %3 バイトに収まりません</translation>
    </message>
    <message>
        <source>Field name &quot;%1&quot; is not a name (letters, digits and _)</source>
        <translation>フィールド名 &quot;%1&quot; は名前として使えません (英字、数字、_)</translation>
    </message>
    <message>
        <source>Field %1.%2.%3: bits %4:%5 lie outside the register</source>
        <translation>フィールド %1.%2.%3: ビット %4:%5 がレジスタの外にあります</translation>
    </message>
    <message>
        <source>Field %1.%2.%3 overlaps another field</source>
        <translation>フィールド %1.%2.%3 が他のフィールドと重なっています</translation>
    </message>
    <message>
        <source>Field %1.%2.%3: value %4 does not fit the field</source>
        <translation>フィールド %1.%2.%3: 値 %4 がフィールドに収まりません</translation>
    </message>
    <message>
        <source>Block name &quot;%1&quot; is not a name (letters, digits and _)</source>
        <translation>ブロック名 &quot;%1&quot; は名前として使えません (英字、数字、_)</translation>
    </message>
    <message>
        <source>Block %1 is defined twice</source>
        <translation>ブロック %1 が二重に定義されています</translation>
    </message>
    <message>
        <source>Register %1.%2 is defined twice</source>
        <translation>レジスタ %1.%2 が二重に定義されています</translation>
    </message>
    <message>
        <source>Register %1 overlaps register %2</source>
        <translation>レジスタ %1 がレジスタ %2 と重なっています</translation>
    </message>
</context>
<context>
    <name>RegisterMapParser</name>
    <message>
        <source>%1 must be a text in quotes</source>
        <translation>%1 は引用符で囲んだ文字列でなければなりません</translation>
    </message>
    <message>
        <source>%1 must be a whole number from 0 to %2</source>
        <translation>%1 は 0 から %2 までの整数でなければなりません</translation>
    </message>
    <message>
        <source>Unknown access &quot;%1&quot; (rw, ro or wo)</source>
        <translation>不明なアクセス &quot;%1&quot; (rw、ro、wo のいずれか)</translation>
    </message>
    <message>
        <source>Unknown format &quot;%1&quot; (hex, dec, ipv4 or mac)</source>
        <translation>不明な形式 &quot;%1&quot; (hex、dec、ipv4、mac のいずれか)</translation>
    </message>
    <message>
        <source>Unknown key &quot;%1&quot; in %2</source>
        <translation>%2 に不明なキー &quot;%1&quot; があります</translation>
    </message>
    <message>
        <source>bits must be &quot;MSB:LSB&quot; or one bit number</source>
        <translation>bits は &quot;MSB:LSB&quot; かビット番号 1 つでなければなりません</translation>
    </message>
    <message>
        <source>Value name &quot;%1&quot; is not a name (letters, digits and _)</source>
        <translation>値の名前 &quot;%1&quot; は名前として使えません (英字、数字、_)</translation>
    </message>
    <message>
        <source>field %1</source>
        <translation>フィールド %1</translation>
    </message>
    <message>
        <source>Field %1 has no bits</source>
        <translation>フィールド %1 に bits がありません</translation>
    </message>
    <message>
        <source>register %1</source>
        <translation>レジスタ %1</translation>
    </message>
    <message>
        <source>Register %1 has no offset</source>
        <translation>レジスタ %1 に offset がありません</translation>
    </message>
    <message>
        <source>block %1</source>
        <translation>ブロック %1</translation>
    </message>
    <message>
        <source>Block %1 has no base</source>
        <translation>ブロック %1 に base がありません</translation>
    </message>
    <message>
        <source>the map (a block is a [table])</source>
        <translation>マップ (ブロックは [テーブル] です)</translation>
    </message>
    <message>
        <source>Cannot read the file: %1</source>
        <translation>ファイルを読めません: %1</translation>
    </message>
</context>
<context>
    <name>RegisterSnapshot</name>
    <message>
        <source>%1 is not a block</source>
        <translation>%1 はブロックではありません</translation>
    </message>
    <message>
        <source>No register is named %1</source>
        <translation>%1 という名前のレジスタはありません</translation>
    </message>
    <message>
        <source>The value of %1 is not a number of %2 bytes</source>
        <translation>%1 の値が %2 バイトの数値ではありません</translation>
    </message>
    <message>
        <source>Cannot read the file: %1</source>
        <translation>ファイルを読めません: %1</translation>
    </message>
</context>
<context>
    <name>RegisterValue</name>
    <message>
        <source>&quot;%1&quot; is not a number</source>
        <translation>&quot;%1&quot; は数値ではありません</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is neither a number nor one of: %2</source>
        <translation>&quot;%1&quot; は数値でも次のいずれでもありません: %2</translation>
    </message>
    <message>
        <source>%1 does not fit %2 bits</source>
        <translation>%1 は %2 ビットに収まりません</translation>
    </message>
</context>
<context>
    <name>RegisterWatch</name>
    <message>
        <source>Data length must be 1 to 255</source>
        <translation>データ長は 1 から 255 で指定してください</translation>
    </message>
    <message>
        <source>%1 is write-only</source>
        <translation>%1 は書き込み専用です</translation>
    </message>
</context>
<context>
    <name>RegistersTab</name>
    <message>
        <source>Filter: name or pattern (settings.*port*)</source>
        <translation>絞り込み: 名前またはパターン (settings.*port*)</translation>
    </message>
    <message>
        <source>Read</source>
        <translation>読み出し</translation>
    </message>
    <message>
        <source>Read the selected registers</source>
        <translation>選択したレジスタを読み出します</translation>
    </message>
    <message>
        <source>Read All</source>
        <translation>すべて読み出し</translation>
    </message>
    <message>
        <source>Read every register shown</source>
        <translation>表示中のすべてのレジスタを読み出します</translation>
    </message>
    <message>
        <source>Write</source>
        <translation>書き込み</translation>
    </message>
    <message>
        <source>Write the edited values (read-modify-write)</source>
        <translation>編集した値を書き込みます (リード・モディファイ・ライト)</translation>
    </message>
    <message>
        <source>Load Map…</source>
        <translation>マップを読み込む…</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>名前</translation>
    </message>
    <message>
        <source>Address / Bits</source>
        <translation>アドレス / ビット</translation>
    </message>
    <message>
        <source>Access</source>
        <translation>アクセス</translation>
    </message>
    <message>
        <source>Raw</source>
        <translation>生の値</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>値</translation>
    </message>
    <message>
        <source>Description</source>
        <translation>説明</translation>
    </message>
    <message>
        <source>Register map %1 loaded</source>
        <translation>レジスタマップ %1 を読み込みました</translation>
    </message>
    <message>
        <source>Load Register Map</source>
        <translation>レジスタマップの読み込み</translation>
    </message>
    <message>
        <source>Register maps (*.toml *.xml);;All files (*)</source>
        <translation>レジスタマップ (*.toml *.xml);;すべてのファイル (*)</translation>
    </message>
    <message>
        <source>Select the registers to read, or press Read All</source>
        <translation>読み出すレジスタを選択するか、「すべて読み出し」を押してください</translation>
    </message>
    <message>
        <source>%1 registers read</source>
        <translation>%1 個のレジスタを読み出しました</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>Nothing to write: type a value into the Value column first</source>
        <translation>書き込むものがありません。先に「値」の列に値を入力してください</translation>
    </message>
    <message>
        <source>Watch</source>
        <translation>監視</translation>
    </message>
    <message>
        <source>Address (hex) or register/field name</source>
        <translation>アドレス (16 進) またはレジスタ/フィールド名</translation>
    </message>
    <message>
        <source>A hex address with a length, or the name of a register or field of the maps (a selected row fills it in)</source>
        <translation>16 進アドレスと長さ、またはマップのレジスタ名/フィールド名 (選択した行が入力されます)</translation>
    </message>
    <message>
        <source>Length</source>
        <translation>長さ</translation>
    </message>
    <message>
        <source>Interval</source>
        <translation>間隔</translation>
    </message>
    <message>
        <source> ms</source>
        <translation> ms</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>開始</translation>
    </message>
    <message>
        <source>Read the value again and again at the interval</source>
        <translation>間隔ごとに値を繰り返し読み出します</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>停止</translation>
    </message>
    <message>
        <source>Stop watching</source>
        <translation>監視を停止します</translation>
    </message>
    <message>
        <source>Export CSV…</source>
        <translation>CSV 書き出し…</translation>
    </message>
    <message>
        <source>Save the changes listed as a CSV file</source>
        <translation>一覧の変化を CSV ファイルに保存します</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>時刻</translation>
    </message>
    <message>
        <source>Type an address or a register name to watch</source>
        <translation>監視するアドレスまたはレジスタ名を入力してください</translation>
    </message>
    <message>
        <source>Export CSV</source>
        <translation>CSV 書き出し</translation>
    </message>
    <message>
        <source>CSV files (*.csv);;All files (*)</source>
        <translation>CSV ファイル (*.csv);;すべてのファイル (*)</translation>
    </message>
    <message>
        <source>Cannot write %1: %2</source>
        <translation>%1 に書き込めません: %2</translation>
    </message>
    <message>
        <source>Watch exported to %1</source>
        <translation>監視結果を %1 に書き出しました</translation>
    </message>
</context>
<context>
    <name>SendLine</name>
    <message>
        <source>\x at position %1 needs two hex digits</source>
        <translation>位置 %1 の \x には 16 進数字が 2 桁必要です</translation>
    </message>
    <message>
        <source>Unknown escape at position %1; use \r, \n, \t, \\ or \xNN</source>
        <translation>位置 %1 のエスケープは使えません。\r、\n、\t、\\、\xNN のいずれかを使ってください</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a run of hex digit pairs</source>
        <translation>&quot;%1&quot; は 2 桁ずつの 16 進数ではありません</translation>
    </message>
</context>
<context>
    <name>SerialBridge</name>
    <message>
        <source>ZEL-RS232C timeout</source>
        <translation>ZEL-RS232C がタイムアウトしました</translation>
    </message>
    <message>
        <source>ZEL-RS232C undefined error</source>
        <translation>ZEL-RS232C で不明なエラーが発生しました</translation>
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
        <source>Writing ZEL-RS232C setting is successed</source>
        <translation>ZEL-RS232C の設定を書き込みました</translation>
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
        <source>Receiving stopped at %1 bytes; the rest waits for the next receive</source>
        <translation>受信を %1 バイトで止めました。残りは次の受信で受け取ります</translation>
    </message>
    <message>
        <source>ZEL-RS232C receiving successed</source>
        <translation>ZEL-RS232C で受信しました</translation>
    </message>
    <message>
        <source>ZEL-RS232C is not connected</source>
        <translation>ZEL-RS232C に接続していません</translation>
    </message>
</context>
<context>
    <name>SerialCommand</name>
    <message>
        <source>%1 must be one of %2, not %3</source>
        <translation>%1 は %2 のいずれかで指定してください (%3 は不可)</translation>
    </message>
    <message>
        <source>Unknown setting %1; the settings are baud, data-bits, stop-bits, parity, dte-flow, dce-flow, dte-wait, dce-wait, dte-port, dce-port, rts, dtr, cts, ri, dsr, cd</source>
        <translation>不明な設定 %1 です。設定は baud、data-bits、stop-bits、parity、dte-flow、dce-flow、dte-wait、dce-wait、dte-port、dce-port、rts、dtr、cts、ri、dsr、cd です</translation>
    </message>
    <message>
        <source>Unknown or incomplete serial command; see: mavix serial --help</source>
        <translation>serial コマンドが不明か不完全です。mavix serial --help を参照してください</translation>
    </message>
    <message>
        <source>The connector must be dte or dce, not %1</source>
        <translation>コネクタは dte か dce で指定してください (%1 は不可)</translation>
    </message>
    <message>
        <source>File cannot open: %1</source>
        <translation>ファイルを開けません: %1</translation>
    </message>
</context>
<context>
    <name>SerialMonitorPanel</name>
    <message>
        <source>
[%1 characters skipped: they came faster than shown]
</source>
        <translation>
[表示が追いつかないため %1 文字を省略しました]
</translation>
    </message>
    <message>
        <source>ZEL-RS232C %1 monitor stopped: the device closed the connection</source>
        <translation>ZEL-RS232C %1 のモニターを停止しました: デバイスが接続を閉じました</translation>
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
        <source>Listening on port %1 of every interface</source>
        <translation>すべてのインターフェースのポート %1 で待ち受け中</translation>
    </message>
    <message>
        <source>Not listening</source>
        <translation>待ち受けていません</translation>
    </message>
    <message>
        <source>%1.
Clients allowed from: %2 (-uiallow: adds networks).
Files of read and write: %3</source>
        <translation>%1。
接続を許可するクライアント: %2 (-uiallow: でネットワークを追加できます)。
read と write のファイルの場所: %3</translation>
    </message>
    <message>
        <source>the working directory</source>
        <translation>作業ディレクトリ</translation>
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
    <message>
        <source>Server mode, uiallow is invalid: give addresses or networks such as 192.168.1.0/24,10.0.0.5</source>
        <translation>サーバーモードの uiallow が不正です: 192.168.1.0/24,10.0.0.5 のようにアドレスかネットワークを指定してください</translation>
    </message>
    <message>
        <source>Server mode, uiroot is not a folder: %1</source>
        <translation>サーバーモードの uiroot がフォルダではありません: %1</translation>
    </message>
    <message>
        <source>: &quot;%1&quot; is not a port number from 0 to 65535</source>
        <translation>: &quot;%1&quot; は 0〜65535 のポート番号ではありません</translation>
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
    <message>
        <source>Transfer rate over the last 60 s; the whole run once it has ended</source>
        <translation>直近 60 秒の転送速度。終了後は全体を表示</translation>
    </message>
    <message>
        <source>MB/s</source>
        <translation>MB/s</translation>
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
    <message>
        <source>Transfer rate over the last 60 s; the whole run once it has ended</source>
        <translation>直近 60 秒の転送速度。終了後は全体を表示</translation>
    </message>
    <message>
        <source>MB/s</source>
        <translation>MB/s</translation>
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
        <source>Sending %1</source>
        <translation>%1 を送信中</translation>
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
    <message>
        <source>Unable to send a message</source>
        <translation>メッセージを送信できません</translation>
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
        <source>Disconnect</source>
        <translation>切断</translation>
    </message>
    <message>
        <source>GPIB command is empty</source>
        <translation>GPIB コマンドが空です</translation>
    </message>
    <message>
        <source>Send the command, then receive the answer</source>
        <translation>コマンドを送信し、続けて応答を受信します</translation>
    </message>
    <message>
        <source>Query</source>
        <translation>クエリ</translation>
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
        <source>TCP Port number must be 0 to 65535</source>
        <translation>TCP ポート番号は 0 から 65535 で指定してください</translation>
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
        <source>ZEL-RS232C data is empty</source>
        <translation>ZEL-RS232C の送信データが空です</translation>
    </message>
    <message>
        <source>Monitor</source>
        <translation>モニター</translation>
    </message>
    <message>
        <source>Monitor DTE</source>
        <translation>DTE をモニター</translation>
    </message>
    <message>
        <source>Monitor DCE</source>
        <translation>DCE をモニター</translation>
    </message>
    <message>
        <source>Time Stamps</source>
        <translation>タイムスタンプ</translation>
    </message>
    <message>
        <source>Send to DTE</source>
        <translation>DTE へ送信</translation>
    </message>
    <message>
        <source>Send to DCE</source>
        <translation>DCE へ送信</translation>
    </message>
    <message>
        <source>Text (\r \n \xNN)</source>
        <translation>テキスト (\r \n \xNN)</translation>
    </message>
    <message>
        <source>Hex</source>
        <translation>16 進</translation>
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
