#include "scopera/svg_picture.h"

#include <QFont>
#include <QImage>
#include <QPaintEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <cmath>
#include <optional>

namespace tarno2 {

namespace {

constexpr int kDotsPerInch = 96;  // of CSS pixels, and of texts in points

QString number(double value) {
    return QString::number(value, 'g', 8);
}

QString pathWords(const QPainterPath& path) {
    QString words;
    for (int i = 0; i < path.elementCount(); ++i) {
        const QPainterPath::Element& element = path.elementAt(i);
        const char* const command = element.isMoveTo()                             ? "M"
                                    : element.isLineTo()                           ? "L"
                                    : element.type == QPainterPath::CurveToElement ? "C"
                                                                                   : "";
        words += QStringLiteral("%1%2 %3 ").arg(QLatin1String(command), number(element.x), number(element.y));
    }
    return words;
}

QString dashWords(const QPen& pen, double width) {
    QStringList dashes;
    for (const qreal dash : pen.dashPattern()) {
        dashes.append(number(dash * width));
    }
    return dashes.join(QLatin1Char(','));
}

}  // namespace

class SvgEngine : public QPaintEngine {
public:
    SvgEngine()
        : QPaintEngine(AllFeatures & ~PaintEngineFeatures(PatternBrush | PerspectiveTransform | ConicalGradientFill |
                                                          LinearGradientFill | RadialGradientFill | PorterDuff |
                                                          BlendModes | ObjectBoundingModeGradients)) {}

    [[nodiscard]] const QString& body() const { return body_; }

    bool begin(QPaintDevice* /*device*/) override {
        body_.clear();
        return true;
    }
    bool end() override { return true; }
    [[nodiscard]] Type type() const override { return User; }

    // Pen, brush and clip are asked of the painter when something is drawn.
    void updateState(const QPaintEngineState& /*state*/) override {}

    void drawPath(const QPainterPath& path) override {
        add(QStringLiteral("<path d=\"%1\"%2%3").arg(pathWords(path), fillWords(), strokeWords()));
    }

    void drawPolygon(const QPointF* points, int count, PolygonDrawMode mode) override {
        QPainterPath path(points[0]);
        for (int i = 1; i < count; ++i) {
            path.lineTo(points[i]);
        }
        if (mode == PolylineMode) {
            add(QStringLiteral("<path d=\"%1\" fill=\"none\"%2").arg(pathWords(path), strokeWords()));
        } else {
            path.closeSubpath();
            drawPath(path);
        }
    }

    void drawPixmap(const QRectF& place, const QPixmap& pixmap, const QRectF& part) override {
        drawImage(place, pixmap.toImage(), part, Qt::AutoColor);
    }

    void drawImage(const QRectF& place, const QImage& image, const QRectF& part, Qt::ImageConversionFlags) override {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        (part.toRect() == image.rect() ? image : image.copy(part.toRect())).save(&buffer, "PNG");
        add(QStringLiteral("<image x=\"%1\" y=\"%2\" width=\"%3\" height=\"%4\" preserveAspectRatio=\"none\" "
                           "xlink:href=\"data:image/png;base64,%5\"")
                .arg(number(place.x()), number(place.y()), number(place.width()), number(place.height()),
                     QString::fromLatin1(bytes.toBase64())));
    }

    void drawTextItem(const QPointF& place, const QTextItem& item) override {
        const QFont font = item.font();
        const double size = font.pixelSize() > 0 ? font.pixelSize() : font.pointSizeF() * kDotsPerInch / 72.0;
        const QColor color = painter()->pen().color();
        add(QStringLiteral("<text x=\"%1\" y=\"%2\" font-family=\"%3\" font-size=\"%4\"%5 fill=\"%6\" "
                           "fill-opacity=\"%7\" xml:space=\"preserve\"")
                .arg(number(place.x()), number(place.y()), font.family().toHtmlEscaped(), number(size),
                     font.bold() ? QStringLiteral(" font-weight=\"bold\"") : QString(), color.name(),
                     number(color.alphaF())),
            item.text().toHtmlEscaped());
    }

private:
    [[nodiscard]] QString fillWords() const {
        const QBrush& brush = painter()->brush();
        if (brush.style() == Qt::NoBrush) {
            return QStringLiteral(" fill=\"none\"");
        }
        return QStringLiteral(" fill=\"%1\" fill-opacity=\"%2\"")
            .arg(brush.color().name(), number(brush.color().alphaF()));
    }

    [[nodiscard]] QString strokeWords() const {
        const QPen& pen = painter()->pen();
        if (pen.style() == Qt::NoPen) {
            return {};
        }
        // A pen of no width is one pixel wide, whatever the scale is.
        const double width = pen.widthF() > 0.0 ? pen.widthF() : 1.0;
        QString words = QStringLiteral(" stroke=\"%1\" stroke-opacity=\"%2\" stroke-width=\"%3\"")
                            .arg(pen.color().name(), number(pen.color().alphaF()), number(width));
        if (pen.style() != Qt::SolidLine) {
            words += QStringLiteral(" stroke-dasharray=\"%1\"").arg(dashWords(pen, width));
        }
        return words;
    }

    /// Ends an element that was begun, with where it is, how much of it is seen, and a text in it.
    void add(QString element, const QString& text = {}) {
        const QString name = element.mid(1, element.indexOf(QLatin1Char(' ')) - 1);
        const QTransform& matrix = painter()->deviceTransform();
        if (!matrix.isIdentity()) {
            element += QStringLiteral(" transform=\"matrix(%1 %2 %3 %4 %5 %6)\"")
                           .arg(number(matrix.m11()), number(matrix.m12()), number(matrix.m21()), number(matrix.m22()),
                                number(matrix.dx()), number(matrix.dy()));
        }
        if (painter()->opacity() < 1.0) {
            element += QStringLiteral(" opacity=\"%1\"").arg(number(painter()->opacity()));
        }
        element += text.isEmpty() ? QStringLiteral("/>") : QStringLiteral(">%1</%2>").arg(text, name);
        body_ += clipped(element) + QLatin1Char('\n');
    }

    // Around the element, because its own transformation would turn the clip too.
    [[nodiscard]] QString clipped(const QString& element) {
        if (!painter()->hasClipping()) {
            return element;
        }
        const QRectF clip = painter()->deviceTransform().mapRect(painter()->clipBoundingRect());
        if (clip != clip_) {
            clip_ = clip;
            ++clips_;
            body_ +=
                QStringLiteral("<clipPath id=\"c%1\"><rect x=\"%2\" y=\"%3\" width=\"%4\" height=\"%5\"/></clipPath>\n")
                    .arg(QString::number(clips_), number(clip.x()), number(clip.y()), number(clip.width()),
                         number(clip.height()));
        }
        return QStringLiteral("<g clip-path=\"url(#c%1)\">%2</g>").arg(QString::number(clips_), element);
    }

    QString body_;
    std::optional<QRectF> clip_;
    int clips_ = 0;
};

SvgPicture::SvgPicture(QSize size) : size_(size), engine_(std::make_unique<SvgEngine>()) {}

SvgPicture::~SvgPicture() = default;

QPaintEngine* SvgPicture::paintEngine() const {
    return engine_.get();
}

QByteArray SvgPicture::text() const {
    return QStringLiteral(
               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" "
               "version=\"1.1\" width=\"%1\" height=\"%2\" viewBox=\"0 0 %1 %2\">\n%3</svg>\n")
        .arg(QString::number(size_.width()), QString::number(size_.height()), engine_->body())
        .toUtf8();
}

int SvgPicture::metric(PaintDeviceMetric metric) const {
    constexpr double kMillimetres = 25.4;
    switch (metric) {
        case PdmWidth:
            return size_.width();
        case PdmHeight:
            return size_.height();
        case PdmWidthMM:
            return static_cast<int>(std::lround(size_.width() * kMillimetres / kDotsPerInch));
        case PdmHeightMM:
            return static_cast<int>(std::lround(size_.height() * kMillimetres / kDotsPerInch));
        case PdmNumColors:
            return 1 << 24;
        case PdmDepth:
            return 32;
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return kDotsPerInch;
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return static_cast<int>(devicePixelRatioFScale());
        default:  // what newer toolkits ask besides
            return QPaintDevice::metric(metric);
    }
}

}  // namespace tarno2
