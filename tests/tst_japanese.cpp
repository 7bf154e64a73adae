// Started under a Japanese locale, the window speaks Japanese.
#include "app/appcontext.h"
#include "ui/mainwindow.h"

#include <QApplication>
#include <QMenu>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>

class tst_Japanese : public QObject
{
    Q_OBJECT

private slots:
    void windowIsJapanese();
};

void tst_Japanese::windowIsJapanese()
{
    AppContext context(false, false, 0, false, nullptr, QStringLiteral("127.0.0.1:4660:24"));
    MainWindow *window = context.mainWindow();
    auto *tabs = window->findChild<QTabWidget *>("modeTab");
    QCOMPARE(tabs->tabText(0), QStringLiteral("一般"));
    QCOMPARE(tabs->tabText(1), QStringLiteral("制御(UDP)"));
    QCOMPARE(tabs->tabText(2), QStringLiteral("データ(TCP)"));
    QCOMPARE(window->findChild<QMenu *>("menuHelp")->title(), QStringLiteral("ヘルプ"));

    // Every button of every tab carries a translated text: none is left in English.
    for (const QPushButton *button : window->findChildren<QPushButton *>()) {
        const QString text = button->text();
        if (text.isEmpty() || text == QStringLiteral("..."))
            continue;
        bool hasJapanese = false;
        for (const QChar c : text)
            hasJapanese |= c.unicode() >= 0x3000;
        QVERIFY2(hasJapanese, qPrintable(button->objectName() + QStringLiteral(": ") + text));
    }
}

int main(int argc, char *argv[])
{
    qputenv("LC_ALL", "ja_JP.UTF-8");
    qputenv("LANG", "ja_JP.UTF-8");
    QApplication app(argc, argv);
    tst_Japanese test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_japanese.moc"
