#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QPointer>
#include <QSaveFile>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include <tarno2/ISCOPERA.h>

#include "platform/library.h"
#include "scopera/plot_view.h"

namespace tarno2 {

namespace {

bool isUsable(const SCOPERAFrames& frames) {
    const uint32_t bytes = sampleBytes(frames.m_nSampleFormat);
    return bytes != 0 && frames.m_pSamples != nullptr && reinterpret_cast<uintptr_t>(frames.m_pSamples) % bytes == 0 &&
           frames.m_nColumns > 0 && frames.m_nColumns <= kScoperaMaxColumns && std::isfinite(frames.m_fFirstX) &&
           std::isfinite(frames.m_fStepX) && frames.m_fStepX > 0.0;
}

/// What the host holds: checks what comes from outside, and lets nothing that is thrown out.
class Scoper final : public ISCOPERA {
public:
    uint32_t TARNO2_CALL AbiVersion() override { return kScoperaAbiVersion; }

    void TARNO2_CALL Release() override {
        delete view_;
        delete this;
    }

    void* TARNO2_CALL CreateView(void* parent) override {
        if (view_ == nullptr) {
            try {
                view_ = new PlotView(static_cast<QWidget*>(parent));
            } catch (...) {
                return nullptr;
            }
        }
        return View();
    }

    void* TARNO2_CALL View() override { return static_cast<QWidget*>(view_); }

    void TARNO2_CALL SetEvents(const SCOPERAEvents* events) override {
        withView([&](PlotView& view) {
            view.setEvents(events != nullptr ? *events : SCOPERAEvents{});
            return true;
        });
    }

    int32_t TARNO2_CALL SetColumns(const SCOPERAColumn* columns, uint32_t count) override {
        return withView([&](PlotView& view) {
            if (count > kScoperaMaxColumns || (columns == nullptr && count > 0)) {
                return false;
            }
            view.setColumns(columns, count);
            return true;
        });
    }

    int32_t TARNO2_CALL SetFrames(const SCOPERAFrames* frames) override {
        return withView([&](PlotView& view) {
            const bool none = frames == nullptr || frames->m_nFrames == 0;
            const bool usable = !none && isUsable(*frames);
            view.setFrames(usable ? *frames : SCOPERAFrames{});
            return none || usable;
        });
    }

    int32_t TARNO2_CALL SetRange(int32_t axis, double lower, double upper) override {
        return withView([&](PlotView& view) {
            if (!isAxis(axis) || !(lower < upper) || !QCPRange::validRange(lower, upper)) {
                return false;
            }
            view.setAxisRange(axis, {lower, upper});
            return true;
        });
    }

    int32_t TARNO2_CALL GetRange(int32_t axis, double* lower, double* upper) override {
        return withView([&](PlotView& view) {
            if (!isAxis(axis) || lower == nullptr || upper == nullptr) {
                return false;
            }
            const QCPRange range = view.axisRange(axis);
            *lower = range.lower;
            *upper = range.upper;
            return true;
        });
    }

    int32_t TARNO2_CALL GetExtremes(double* lowest, double* highest) override {
        return withView([&](PlotView& view) {
            const auto extremes = view.extremes();
            if (!extremes || lowest == nullptr || highest == nullptr) {
                return false;
            }
            *lowest = extremes->lower;
            *highest = extremes->upper;
            return true;
        });
    }

    int32_t TARNO2_CALL SetOption(uint32_t option, int32_t value) override {
        return withView([&](PlotView& view) { return view.setOption(option, value); });
    }

    int32_t TARNO2_CALL GetOption(uint32_t option, int32_t* value) override {
        return withView([&](PlotView& view) {
            const auto present = view.option(option);
            if (!present || value == nullptr) {
                return false;
            }
            *value = *present;
            return true;
        });
    }

    int32_t TARNO2_CALL SetText(uint32_t code, const char* text) override {
        return withView([&](PlotView& view) { return view.setText(code, QString::fromUtf8(text)); });
    }

    int32_t TARNO2_CALL SetFont(const char* family, int32_t points) override {
        return withView([&](PlotView& view) {
            view.setPlotFont(QString::fromUtf8(family), points);
            return true;
        });
    }

    int32_t TARNO2_CALL SetCursors(const SCOPERACursors* cursors) override {
        return withView([&](PlotView& view) {
            if (cursors == nullptr || !std::isfinite(cursors->m_fX[0]) || !std::isfinite(cursors->m_fX[1]) ||
                !std::isfinite(cursors->m_fY[0]) || !std::isfinite(cursors->m_fY[1])) {
                return false;
            }
            view.setCursors(*cursors);
            return true;
        });
    }

    int32_t TARNO2_CALL GetCursors(SCOPERACursors* cursors) override {
        return withView([&](PlotView& view) {
            if (cursors == nullptr) {
                return false;
            }
            *cursors = view.cursors();
            return true;
        });
    }

    uint32_t TARNO2_CALL PixelWidth() override { return view_ != nullptr ? view_->pixelWidth() : 0; }

    int32_t TARNO2_CALL Render() override {
        return withView([](PlotView& view) {
            view.render();
            return true;
        });
    }

    int32_t TARNO2_CALL SavePicture(const char* file) override {
        return withView([&](PlotView& view) {
            const QString name = QString::fromUtf8(file);
            const bool drawn = name.endsWith(QStringLiteral(".svg"), Qt::CaseInsensitive);
            const QByteArray text = drawn ? view.svg() : QByteArray();
            QSaveFile output(name);
            return output.open(QIODevice::WriteOnly) &&
                   (drawn ? output.write(text) == text.size() : view.picture().save(&output, "PNG")) && output.commit();
        });
    }

    int32_t TARNO2_CALL CopyPicture() override {
        return withView([](PlotView& view) {
            auto* both = new QMimeData;
            both->setImageData(view.picture().toImage());
            both->setData(QStringLiteral("image/svg+xml"), view.svg());
            QApplication::clipboard()->setMimeData(both);
            return true;
        });
    }

    int32_t TARNO2_CALL SetFlags(const SCOPERAFlag* flags, uint32_t count) override {
        return withView([&](PlotView& view) {
            if (count > kScoperaMaxFlags || (flags == nullptr && count > 0) ||
                !std::all_of(flags, flags + count, [](const SCOPERAFlag& flag) { return std::isfinite(flag.m_fX); })) {
                return false;
            }
            view.setFlags(flags, count);
            return true;
        });
    }

    int32_t TARNO2_CALL SetLanes(const SCOPERALane* lanes, uint32_t count) override {
        return withView([&](PlotView& view) {
            if (count > kScoperaMaxColumns || (lanes == nullptr && count > 0) ||
                !std::all_of(lanes, lanes + count, [](const SCOPERALane& lane) {
                    return lane.m_fLower < lane.m_fUpper && QCPRange::validRange(lane.m_fLower, lane.m_fUpper);
                })) {
                return false;
            }
            view.setLanes(lanes, count);
            return true;
        });
    }

    int32_t TARNO2_CALL GetColumnExtremes(uint32_t column, double* lowest, double* highest) override {
        return withView([&](PlotView& view) {
            const auto extremes = view.extremes(column);
            if (!extremes || lowest == nullptr || highest == nullptr) {
                return false;
            }
            *lowest = extremes->lower;
            *highest = extremes->upper;
            return true;
        });
    }

    int32_t TARNO2_CALL SetReadings(const SCOPERAReading* readings, uint32_t count) override {
        return withView([&](PlotView& view) {
            if (count > kScoperaMaxColumns || (readings == nullptr && count > 0)) {
                return false;
            }
            view.setReadings(readings, count);
            return true;
        });
    }

    int32_t TARNO2_CALL SetLevels(const SCOPERALevel* levels, uint32_t count) override {
        return withView([&](PlotView& view) {
            if (count > kScoperaMaxFlags || (levels == nullptr && count > 0) ||
                !std::all_of(levels, levels + count,
                             [](const SCOPERALevel& level) { return std::isfinite(level.m_fY); })) {
                return false;
            }
            view.setLevels(levels, count);
            return true;
        });
    }

    int32_t TARNO2_CALL ShowLane(uint32_t lane) override {
        return withView([&](PlotView& view) { return view.showLane(lane); });
    }

    int32_t TARNO2_CALL SetClockX(int64_t start, double secondsPerUnit) override {
        return withView([&](PlotView& view) {
            if (!std::isfinite(secondsPerUnit) || secondsPerUnit < 0.0) {
                return false;
            }
            view.setClock({start, secondsPerUnit});
            return true;
        });
    }

    int32_t TARNO2_CALL SetEarlier(const SCOPERAFrames* frames, uint32_t count) override {
        return withView([&](PlotView& view) {
            const bool usable = count <= kScoperaMostEarlier && (frames != nullptr || count == 0) &&
                                std::all_of(frames, frames + (frames != nullptr ? count : 0), isUsable);
            view.setEarlier(usable ? frames : nullptr, usable ? count : 0);
            return usable;
        });
    }

private:
    static bool isAxis(int32_t axis) { return axis == kScoperaAxisX || axis == kScoperaAxisY; }

    template <typename Use>
    int32_t withView(Use use) {
        if (view_ == nullptr) {
            return 0;
        }
        try {
            return use(*view_) ? 1 : 0;
        } catch (...) {
            return 0;
        }
    }

    // The host's parent widget may delete it first.
    QPointer<PlotView> view_;
};

}  // namespace

}  // namespace tarno2

TARNO2_EXPORT void* TARNO2_CALL StaticFactory(const char* interfaceName, uint32_t flags) {
    if (interfaceName == nullptr || std::strcmp(interfaceName, TARNO2_SCOPERA_INTERFACE) != 0 || flags != 0) {
        return nullptr;
    }
    // Qt remembers types that the plotting classes made known, so their code has to stay when the library is closed.
    tarno2::keepLibraryOf([] {});
    return static_cast<ISCOPERA*>(new (std::nothrow) tarno2::Scoper);
}
