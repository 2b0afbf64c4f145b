#include "ui/view_pictures.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QFontMetrics>
#include <QImage>
#include <QMimeData>
#include <QPainter>
#include <QPalette>
#include <QRegularExpression>
#include <QSaveFile>
#include <QTemporaryDir>
#include <algorithm>
#include <utility>

namespace tarno2 {

namespace {

constexpr int kTitleMargin = 3;  // pixels above and below

// The plotting library tells no reason, so the same is tried once more.
PictureProblem whyNot(const QString& file) {
    QSaveFile again(file);
    const QByteArray much(1 << 20, '\0');
    if (again.open(QIODevice::WriteOnly)) {
        static_cast<void>(again.write(much) == much.size() && again.flush());
    }
    return {file, again.errorString()};
}

/// Pictures with a line for the title above each, from the top down. Pixels of the screen.
class PictureSheet {
public:
    explicit PictureSheet(const std::vector<ViewPicture>& pictures) {
        for (size_t i = 0; i < pictures.size() && !problem_; ++i) {
            take(pictures[i]);
        }
    }

    /// Of a picture that could not be taken.
    [[nodiscard]] const std::optional<PictureProblem>& problem() const { return problem_; }
    [[nodiscard]] QImage image() const;
    [[nodiscard]] QByteArray svg() const;

private:
    struct Part {
        QString title;
        QImage image;
        QString svg;  ///< from its root element on
        QSize size;   ///< logical pixels
    };

    void take(const ViewPicture& picture);
    [[nodiscard]] QSize size() const;

    std::vector<Part> parts_;
    std::optional<PictureProblem> problem_;
    double ratio_ = 1.0;  ///< of the screen's pixels to logical ones
    QFont font_ = QApplication::font();
    int line_ = QFontMetrics(font_).height() + 2 * kTitleMargin;
    QPalette colors_ = QApplication::palette();
};

// By files, as the plotting library gives its pictures. The one with lines tells how large it is on the screen.
void PictureSheet::take(const ViewPicture& picture) {
    QTemporaryDir folder;
    const QString pixels = folder.filePath(QStringLiteral("picture.png"));
    QFile drawn(folder.filePath(QStringLiteral("picture.svg")));
    if (!folder.isValid()) {
        problem_ = {QDir::tempPath(), folder.errorString()};
        return;
    }
    const bool saved = picture.scoper->SavePicture(pixels.toUtf8().constData()) != 0 &&
                       picture.scoper->SavePicture(drawn.fileName().toUtf8().constData()) != 0;
    static const QRegularExpression root(QStringLiteral("<svg [^>]*width=\"(\\d+)\" height=\"(\\d+)\""));
    const QString text = saved && drawn.open(QIODevice::ReadOnly) ? QString::fromUtf8(drawn.readAll()) : QString();
    const QRegularExpressionMatch found = root.match(text);
    Part part{picture.title,
              QImage(pixels),
              text.mid(found.capturedStart()),
              {found.captured(1).toInt(), found.captured(2).toInt()}};
    if (part.size.isEmpty() || part.image.isNull()) {
        problem_ = whyNot(folder.filePath(QStringLiteral("again")));
        return;
    }
    // A title may have been a file's name.
    static const QRegularExpression control(QStringLiteral("[\\x00-\\x1f\\x7f]"));
    part.title.replace(control, QStringLiteral("?"));
    part.image.setDevicePixelRatio(static_cast<double>(part.image.width()) / part.size.width());
    ratio_ = std::max(ratio_, part.image.devicePixelRatio());
    parts_.push_back(std::move(part));
}

QSize PictureSheet::size() const {
    QSize all(0, 0);
    for (const Part& part : parts_) {
        all = {std::max(all.width(), part.size.width()), all.height() + line_ + part.size.height()};
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
        top += line_ + part.size.height();
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
        QString part = parts_[i].svg;
        const QString clip = QStringLiteral("p%1c").arg(i);
        part.replace(QLatin1String("<clipPath id=\"c"), QLatin1String("<clipPath id=\"") + clip);
        part.replace(QLatin1String("clip-path=\"url(#c"), QLatin1String("clip-path=\"url(#") + clip);
        text += QStringLiteral("<svg y=\"%1\" ").arg(top + line_) + part.mid(5);
        top += line_ + parts_[i].size.height();
    }
    return (text + QStringLiteral("</svg>\n")).toUtf8();
}

}  // namespace

std::optional<PictureProblem> savePictures(const std::vector<ViewPicture>& pictures, const QString& file) {
    if (pictures.size() == 1) {
        if (pictures.front().scoper->SavePicture(file.toUtf8().constData()) != 0) {
            return std::nullopt;
        }
        return whyNot(file);
    }
    const PictureSheet sheet(pictures);
    if (sheet.problem()) {
        return sheet.problem();
    }
    QSaveFile output(file);
    const bool drawn = file.endsWith(QStringLiteral(".svg"), Qt::CaseInsensitive);
    const QByteArray text = drawn ? sheet.svg() : QByteArray();
    const bool written = output.open(QIODevice::WriteOnly) &&
                         (drawn ? output.write(text) == text.size() : sheet.image().save(&output, "PNG")) &&
                         output.commit();
    return written ? std::nullopt : std::optional(PictureProblem{file, output.errorString()});
}

std::optional<PictureProblem> copyPictures(const std::vector<ViewPicture>& pictures) {
    if (pictures.size() == 1) {
        static_cast<void>(pictures.front().scoper->CopyPicture());
        return std::nullopt;
    }
    const PictureSheet sheet(pictures);
    if (!sheet.problem()) {
        auto* both = new QMimeData;
        both->setImageData(sheet.image());
        both->setData(QStringLiteral("image/svg+xml"), sheet.svg());
        QApplication::clipboard()->setMimeData(both);
    }
    return sheet.problem();
}

}  // namespace tarno2
