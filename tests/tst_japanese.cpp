// The window under ja_JP (or MAVIX_TEST_LOCALE): our translation beside Qt's own, or English
// throughout for a locale we do not translate into.
#include "app/appcontext.h"
#include "ui/mainwindow.h"

#include <QtTest>
#include <QtWidgets>

class tst_Japanese : public QObject
{
    Q_OBJECT

private slots:
    void window()
    {
        AppContext context(false, false, 0, false, nullptr, QStringLiteral("127.0.0.1:4660:24"));
        MainWindow *window = context.mainWindow();
        const QMenu *help = window->findChild<QMenu *>("menuHelp");
        const QStringList shown{window->findChild<QTabWidget *>("modeTab")->tabText(0),
                                help->title(), help->actions().value(0)->text(),
                                QCoreApplication::translate("QPlatformTheme", "&Yes")};
        if (QLocale::system().name() != u"ja_JP") {
            QCOMPARE(shown, (QStringList{"General", "Help", "About", "&Yes"}));
            return;
        }
        QCOMPARE(shown, (QStringList{"一般", "ヘルプ", "バージョン情報", "はい(&Y)"}));
        // Every button of every tab carries a translated text: none is left in English.
        for (const QPushButton *button : window->findChildren<QPushButton *>()) {
            const QString text = button->text();
            const bool japanese = std::any_of(text.begin(), text.end(),
                                              [](QChar c) { return c.unicode() >= 0x3000; });
            QVERIFY2(japanese || text.isEmpty() || text == u"...",
                     qPrintable(button->objectName()));
        }
    }
};

int main(int argc, char *argv[])
{
    const QByteArray locale = qEnvironmentVariable("MAVIX_TEST_LOCALE", "ja_JP.UTF-8").toLatin1();
    qputenv("LC_ALL", locale);
    qputenv("LANG", locale);
    QApplication app(argc, argv);
    tst_Japanese test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_japanese.moc"
