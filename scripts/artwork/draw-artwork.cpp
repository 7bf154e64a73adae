// Draws the program's pictures: the four eye states of the logo view, the maker's logo of the About
// dialog and the application icon. Everything is drawn with plain shapes so the artwork is our own
// and can be regenerated at any time: scripts/draw-artwork.sh writes the PNG files into ui/images.
#include <QDir>
#include <QFont>
#include <QGuiApplication>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <QTextStream>

#include <cmath>

namespace {

// The eye is drawn on a 256 x 256 canvas; every coordinate below is in that space.
constexpr int kEyeSizePx = 256;
constexpr QPointF kEyeCentre(128.0, 128.0);
constexpr qreal kEyeRadius = 112.0;
constexpr qreal kOutlineWidth = 12.0;
constexpr qreal kIrisRadius = 50.0;
constexpr qreal kPupilRadius = 23.0;
constexpr qreal kClosedCreaseY = 132.0;
constexpr qreal kClosedCreaseSag = 18.0;

const QColor kOutline(0x1f, 0x2a, 0x44);
const QColor kSclera(0xff, 0xff, 0xff);
const QColor kScleraShade(0xdd, 0xe6, 0xf3);
const QColor kIrisInner(0x4c, 0xc9, 0xd6);
const QColor kIrisOuter(0x1b, 0x7f, 0xa8);
const QColor kPupil(0x12, 0x18, 0x26);
const QColor kLidLight(0x8d, 0x9c, 0xf0);
const QColor kLidDark(0x5a, 0x68, 0xc8);

enum class EyeState { Open, Half, Closed, Up };

QPainterPath eyeball()
{
    QPainterPath path;
    path.addEllipse(kEyeCentre, kEyeRadius, kEyeRadius);
    return path;
}

// The lower edge of the upper lid: a curve across the eye, lowest in the middle by `sag`.
QPainterPath lidEdge(qreal edgeY, qreal sag)
{
    QPainterPath path;
    path.moveTo(0.0, edgeY - sag);
    path.quadTo(kEyeCentre.x(), edgeY + sag, kEyeSizePx, edgeY - sag);
    return path;
}

// The lid: everything of the eyeball above its edge.
QPainterPath lid(qreal edgeY, qreal sag)
{
    QPainterPath path = lidEdge(edgeY, sag);
    path.lineTo(kEyeSizePx, 0.0);
    path.lineTo(0.0, 0.0);
    path.closeSubpath();
    return path.intersected(eyeball());
}

void drawSclera(QPainter &painter)
{
    QRadialGradient shade(kEyeCentre, kEyeRadius, kEyeCentre - QPointF(20.0, 30.0));
    shade.setColorAt(0.0, kSclera);
    shade.setColorAt(0.75, kSclera);
    shade.setColorAt(1.0, kScleraShade);
    painter.setPen(Qt::NoPen);
    painter.setBrush(shade);
    painter.drawPath(eyeball());
}

void drawIris(QPainter &painter, const QPointF &centre)
{
    QRadialGradient iris(centre, kIrisRadius);
    iris.setColorAt(0.0, kIrisInner);
    iris.setColorAt(1.0, kIrisOuter);
    painter.setPen(QPen(kOutline, 5.0));
    painter.setBrush(iris);
    painter.drawEllipse(centre, kIrisRadius, kIrisRadius);

    painter.setPen(Qt::NoPen);
    painter.setBrush(kPupil);
    painter.drawEllipse(centre, kPupilRadius, kPupilRadius);

    // Two highlights make the eye look alive and friendly.
    painter.setBrush(Qt::white);
    painter.drawEllipse(centre + QPointF(-17.0, -18.0), 11.0, 11.0);
    painter.drawEllipse(centre + QPointF(16.0, 15.0), 5.0, 5.0);
}

void drawLid(QPainter &painter, qreal edgeY, qreal sag)
{
    QLinearGradient colour(0.0, kEyeCentre.y() - kEyeRadius, 0.0, edgeY + sag);
    colour.setColorAt(0.0, kLidLight);
    colour.setColorAt(1.0, kLidDark);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawPath(lid(edgeY, sag));

    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(kOutline, 9.0, Qt::SolidLine, Qt::RoundCap));
    painter.save();
    painter.setClipPath(eyeball());
    painter.drawPath(lidEdge(edgeY, sag));
    painter.restore();
}

// Short lashes hanging below the lid's edge, following its curve.
void drawLashes(QPainter &painter, qreal edgeY, qreal sag)
{
    painter.setPen(QPen(kOutline, 9.0, Qt::SolidLine, Qt::RoundCap));
    for (const qreal t : {0.3, 0.5, 0.7}) {
        const qreal x = kEyeSizePx * t;
        // A point on the quadratic curve from (0, y0) over (128, y1) to (256, y0).
        const qreal y0 = edgeY - sag;
        const qreal y1 = edgeY + sag;
        const qreal y = (1 - t) * (1 - t) * y0 + 2 * (1 - t) * t * y1 + t * t * y0;
        const qreal lean = (t - 0.5) * 30.0;
        painter.drawLine(QPointF(x, y + 6.0), QPointF(x + lean, y + 26.0));
    }
}

void drawOutline(QPainter &painter)
{
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(kOutline, kOutlineWidth));
    painter.drawPath(eyeball());
}

void drawEye(QPainter &painter, EyeState state)
{
    painter.setRenderHint(QPainter::Antialiasing);
    drawSclera(painter);

    painter.save();
    painter.setClipPath(eyeball());
    switch (state) {
    case EyeState::Open:
        drawIris(painter, kEyeCentre + QPointF(0.0, 6.0));
        drawLid(painter, 58.0, 12.0);
        break;
    case EyeState::Up:
        drawIris(painter, kEyeCentre + QPointF(0.0, -34.0));
        drawLid(painter, 50.0, 10.0);
        break;
    case EyeState::Half:
        drawIris(painter, kEyeCentre + QPointF(0.0, 10.0));
        drawLid(painter, 122.0, 14.0);
        break;
    case EyeState::Closed:
        // Both lids meet a little below the middle; only the crease and the lashes show.
        drawLid(painter, 2.0 * kEyeSizePx, 0.0);
        painter.setPen(QPen(kOutline, 10.0, Qt::SolidLine, Qt::RoundCap));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(lidEdge(kClosedCreaseY, kClosedCreaseSag));
        break;
    }
    painter.restore();

    if (state == EyeState::Closed)
        drawLashes(painter, kClosedCreaseY, kClosedCreaseSag);
    drawOutline(painter);
}

QImage transparentImage(int width, int height)
{
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

QImage eyeImage(EyeState state)
{
    QImage image = transparentImage(kEyeSizePx, kEyeSizePx);
    QPainter painter(&image);
    drawEye(painter, state);
    return image;
}

// The emblem of the maker: three linked nodes, the network the core lives in.
void drawEmblem(QPainter &painter, const QPointF &centre, qreal radius)
{
    const QPointF nodes[] = {
        centre + QPointF(0.0, -radius),
        centre + QPointF(radius * std::cos(M_PI / 6.0), radius * 0.5),
        centre + QPointF(-radius * std::cos(M_PI / 6.0), radius * 0.5),
    };
    painter.setPen(QPen(QColor(0xcf, 0xe8, 0xff), radius * 0.22, Qt::SolidLine, Qt::RoundCap));
    painter.setBrush(Qt::NoBrush);
    painter.drawPolygon(nodes, 3);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x4c, 0xc9, 0xd6));
    for (const QPointF &node : nodes)
        painter.drawEllipse(node, radius * 0.34, radius * 0.34);
    painter.setBrush(Qt::white);
    painter.drawEllipse(centre, radius * 0.26, radius * 0.26);
}

QImage makerLogo()
{
    constexpr int kWidthPx = 200;
    constexpr int kHeightPx = 60;
    QImage image = transparentImage(kWidthPx, kHeightPx);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);

    const QRectF badge(1.0, 1.0, kWidthPx - 2.0, kHeightPx - 2.0);
    QLinearGradient fill(badge.topLeft(), badge.bottomLeft());
    fill.setColorAt(0.0, QColor(0x2f, 0x46, 0x7a));
    fill.setColorAt(1.0, kOutline);
    painter.setPen(QPen(QColor(0x5a, 0x68, 0xc8), 2.0));
    painter.setBrush(fill);
    painter.drawRoundedRect(badge, 16.0, 16.0);

    drawEmblem(painter, QPointF(34.0, 31.0), 15.0);

    QFont font(QStringLiteral("DejaVu Sans"));
    font.setBold(true);
    font.setPixelSize(32);
    font.setLetterSpacing(QFont::AbsoluteSpacing, 1.0);
    QPainterPath word;
    word.addText(0.0, 0.0, font, QStringLiteral("Mavix"));
    const QRectF wordBox = word.boundingRect();
    const QRectF room(62.0, 0.0, kWidthPx - 62.0 - 14.0, kHeightPx);
    word.translate(room.center() - wordBox.center());
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    painter.drawPath(word);
    return image;
}

QImage applicationIcon()
{
    constexpr int kIconSizePx = 128;
    QImage image = transparentImage(kIconSizePx, kIconSizePx);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);

    const QRectF tile(4.0, 4.0, kIconSizePx - 8.0, kIconSizePx - 8.0);
    QLinearGradient fill(tile.topLeft(), tile.bottomRight());
    fill.setColorAt(0.0, QColor(0x2f, 0x46, 0x7a));
    fill.setColorAt(1.0, kOutline);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(tile, 26.0, 26.0);

    // The open eye, a little smaller than the tile.
    constexpr qreal kEyeScale = 0.39;
    painter.translate(kIconSizePx / 2.0 - kEyeSizePx * kEyeScale / 2.0,
                      kIconSizePx / 2.0 - kEyeSizePx * kEyeScale / 2.0);
    painter.scale(kEyeScale, kEyeScale);
    drawEye(painter, EyeState::Open);
    return image;
}

bool save(const QImage &image, const QString &path)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    if (image.save(path, "PNG"))
        return true;
    QTextStream(stderr) << "cannot write " << path << '\n';
    return false;
}

} // namespace

int main(int argc, char *argv[])
{
    // Fonts need a GUI application, but no screen is needed to draw into images.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    if (argc != 2) {
        QTextStream(stderr) << "usage: draw-artwork <ui/images folder>\n";
        return 2;
    }
    const QDir images(QString::fromLocal8Bit(argv[1]));
    bool ok = true;
    ok &= save(eyeImage(EyeState::Open), images.filePath(QStringLiteral("logo/openEye.png")));
    ok &= save(eyeImage(EyeState::Half), images.filePath(QStringLiteral("logo/halfEye.png")));
    ok &= save(eyeImage(EyeState::Up), images.filePath(QStringLiteral("logo/upEye.png")));
    ok &= save(eyeImage(EyeState::Closed), images.filePath(QStringLiteral("logo/closeEye.png")));
    ok &= save(makerLogo(), images.filePath(QStringLiteral("logo/image/orxlogo.s.png")));
    ok &= save(applicationIcon(), images.filePath(QStringLiteral("mavix-utility.png")));
    return ok ? 0 : 1;
}
