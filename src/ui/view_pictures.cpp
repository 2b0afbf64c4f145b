#include "ui/view_pictures.h"

#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QFontMetrics>
#include <QImage>
#include <QMimeData>
#include <QPainter>
#include <QPalette>
#include <QSaveFile>
#include <QTemporaryDir>
#include <algorithm>

namespace tarno2 {

namespace {

constexpr int kTitleMargin = 3;  // pixels above and below

/// Pictures with a line for the title above each, from the top down. Pixels of the screen.
class PictureSheet {
public:
    explicit PictureSheet(const std::vector<ViewPicture>& pictures) {
        for (const ViewPicture& picture : pictures) {
            take(picture);
        }
    }

    /// Every picture could be taken.
    [[nodiscard]] bool whole() const { return whole_; }
    [[nodiscard]] QImage image() const;
    [[nodiscard]] QByteArray svg() const;

private:
    struct Part {
        QString title;
        QImage image;
        QByteArray svg;
    };

    void take(const ViewPicture& picture);
    [[nodiscard]] QSize size() const;

    std::vector<Part> parts_;
    bool whole_ = true;
    double ratio_ = qApp->devicePixelRatio();
    QFont font_ = QApplication::font();
    int line_ = QFontMetrics(font_).height() + 2 * kTitleMargin;
    QPalette colors_ = QApplication::palette();
};

// By files, as the plotting library gives its pictures.
void PictureSheet::take(const ViewPicture& picture) {
    const QTemporaryDir folder;
    const QString pixels = folder.filePath(QStringLiteral("picture.png"));
    QFile drawn(folder.filePath(QStringLiteral("picture.svg")));
    Part part{picture.title, {}, {}};
    if (folder.isValid() && picture.scoper->SavePicture(pixels.toUtf8().constData()) != 0 &&
        picture.scoper->SavePicture(drawn.fileName().toUtf8().constData()) != 0 && drawn.open(QIODevice::ReadOnly)) {
        part.image.load(pixels);
        part.svg = drawn.readAll();
    }
    part.image.setDevicePixelRatio(ratio_);
    whole_ = whole_ && !part.image.isNull() && !part.svg.isEmpty();
    parts_.push_back(std::move(part));
}

QSize PictureSheet::size() const {
    QSize all(0, 0);
    for (const Part& part : parts_) {
        const QSize own = part.image.deviceIndependentSize().toSize();
        all = {std::max(all.width(), own.width()), all.height() + line_ + own.height()};
    }
    return all;
}

QImage PictureSheet::image() const {
    QImage sheet(size() * ratio_, QImage::Format_RGB32);
    sheet.setDevicePixelRatio(ratio_);
    sheet.fill(colors_.color(QPalette::Window));
    QPainter painter(&sheet);
    painter.setFont(font_);
    painter.setPen(colors_.color(QPalette::WindowText));
    int top = 0;
    for (const Part& part : parts_) {
        const QRect title(kTitleMargin, top, size().width() - kTitleMargin, line_);
        painter.drawText(title, Qt::AlignVCenter | Qt::TextSingleLine, part.title);
        painter.drawImage(0, top + line_, part.image);
        top += line_ + part.image.deviceIndependentSize().toSize().height();
    }
    return sheet;
}

// Each keeps its own coordinates; the names of its clips must not meet those of another.
QByteArray PictureSheet::svg() const {
    const QSize all = size();
    QString text =
        QStringLiteral(
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" "
            "version=\"1.1\" width=\"%1\" height=\"%2\" viewBox=\"0 0 %1 %2\">\n"
            "<rect width=\"%1\" height=\"%2\" fill=\"%3\"/>\n")
            .arg(QString::number(all.width()), QString::number(all.height()), colors_.color(QPalette::Window).name());
    int top = 0;
    for (size_t i = 0; i < parts_.size(); ++i) {
        const QFontMetrics metrics(font_);
        text += QStringLiteral("<text x=\"%1\" y=\"%2\" font-family=\"%3\" font-size=\"%4\" fill=\"%5\">%6</text>\n")
                    .arg(QString::number(kTitleMargin), QString::number(top + kTitleMargin + metrics.ascent()),
                         font_.family().toHtmlEscaped(), QString::number(QFontInfo(font_).pixelSize()),
                         colors_.color(QPalette::WindowText).name(), parts_[i].title.toHtmlEscaped());
        QString part = QString::fromUtf8(parts_[i].svg);
        part.remove(0, part.indexOf(QLatin1String("<svg ")));
        const QString clip = QStringLiteral("p%1c").arg(i);
        part.replace(QLatin1String("<clipPath id=\"c"), QLatin1String("<clipPath id=\"") + clip);
        part.replace(QLatin1String("clip-path=\"url(#c"), QLatin1String("clip-path=\"url(#") + clip);
        text += QStringLiteral("<svg y=\"%1\" ").arg(top + line_) + part.mid(5);
        top += line_ + parts_[i].image.deviceIndependentSize().toSize().height();
    }
    return (text + QStringLiteral("</svg>\n")).toUtf8();
}

}  // namespace

bool savePictures(const std::vector<ViewPicture>& pictures, const QString& file) {
    if (pictures.size() == 1) {
        return pictures.front().scoper->SavePicture(file.toUtf8().constData()) != 0;
    }
    const PictureSheet sheet(pictures);
    QSaveFile output(file);
    if (!sheet.whole() || !output.open(QIODevice::WriteOnly)) {
        return false;
    }
    const bool drawn = file.endsWith(QStringLiteral(".svg"), Qt::CaseInsensitive);
    const QByteArray text = drawn ? sheet.svg() : QByteArray();
    return (drawn ? output.write(text) == text.size() : sheet.image().save(&output, "PNG")) && output.commit();
}

bool copyPictures(const std::vector<ViewPicture>& pictures) {
    if (pictures.size() == 1) {
        return pictures.front().scoper->CopyPicture() != 0;
    }
    const PictureSheet sheet(pictures);
    if (!sheet.whole()) {
        return false;
    }
    auto* both = new QMimeData;
    both->setImageData(sheet.image());
    both->setData(QStringLiteral("image/svg+xml"), sheet.svg());
    QApplication::clipboard()->setMimeData(both);
    return true;
}

}  // namespace tarno2
