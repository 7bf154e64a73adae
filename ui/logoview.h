// The eye in the main window's corner: it blinks once when the device answered, shuts when an
// exchange failed and opens again at the next success, so the user sees at a glance whether the
// device talks.
#pragma once

#include <QGraphicsView>
#include <QImage>
#include <QString>

class QTimer;

class LogoView : public QGraphicsView
{
    Q_OBJECT

public:
    enum Mode : qint32 {
        ModeOpen = 0,
        ModeClosed = 1,
        ModeBlinking = 2,
    };
    Q_ENUM(Mode)

    // The eye's side grows with the window's height: 72 px at the window's least height of 660 px,
    // at most twice that.
    static constexpr int kBaseSide = 72;
    static constexpr int kBaseWindowHeight = 660;
    [[nodiscard]] static int sideForWindowHeight(int height);

    // One blink: a tick every 100 ms; at the twelfth the eye rests open.
    static constexpr int kBlinkTickMs = 100;
    static constexpr quint8 kBlinkTicks = 12;

    explicit LogoView(QWidget *parent = nullptr);

    // State, for whoever needs to know what the eye shows.
    [[nodiscard]] Mode mode() const { return m_mode; }
    [[nodiscard]] quint8 frame() const { return m_frame; }
    // Base name of the picture painted now: "openEye", "halfEye", "upEye" or "closeEye".
    [[nodiscard]] QString chosenImageName() const;

public slots:
    void StartAnimation();
    void CloseEye();
    void OpenEye();
    void forwardAnimation();

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    enum class Picture { Open, Half, Up, Closed };

    [[nodiscard]] Picture chosenPicture() const;
    [[nodiscard]] const QImage &imageOf(Picture picture) const;
    void repaintNow();
    void followWindowHeight();

    Mode m_mode = ModeOpen;
    QImage m_openImage;
    QImage m_upImage;
    QImage m_closedImage;
    QImage m_halfImage;
    QTimer *m_timer = nullptr;
    quint8 m_frame = 0;
    QWidget *m_watchedWindow = nullptr;
};
