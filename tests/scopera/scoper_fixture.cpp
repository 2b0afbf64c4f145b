#include "tests/scopera/scoper_fixture.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPalette>
#include <cmath>

#include "platform/paths.h"
#include "platform/registry.h"
#include "tests/support/temporary_folder.h"

namespace tarno2 {

namespace {

Told& toldOf(void* context) {
    return *static_cast<Told*>(context);
}

SCOPERAEvents eventsInto(Told& told) {
    SCOPERAEvents events{};
    events.m_pContext = &told;
    events.m_pRangeChanged = [](void* context, int32_t axis, double lower, double upper, int32_t cause) {
        ++toldOf(context).rangeCalls[axis];
        toldOf(context).lower[axis] = lower;
        toldOf(context).upper[axis] = upper;
        toldOf(context).cause[axis] = cause;
    };
    events.m_pAutomaticWanted = [](void* context) { ++toldOf(context).automaticCalls; };
    events.m_pColumnSwitched = [](void* context, uint32_t column, int32_t visible) {
        toldOf(context).switchedColumn = static_cast<int>(column);
        toldOf(context).switchedVisible = visible;
    };
    events.m_pMouseMoved = [](void* context, double x, double y, int32_t inside) {
        toldOf(context).mouseX = x;
        toldOf(context).mouseY = y;
        toldOf(context).mouseInside = inside;
    };
    events.m_pMousePressed = [](void* context, int32_t button, double, double) {
        toldOf(context).pressedButton = button;
    };
    events.m_pCursorsMoved = [](void* context, const SCOPERACursors* cursors) {
        ++toldOf(context).cursorCalls;
        toldOf(context).cursors = *cursors;
    };
    events.m_pPaintWanted = [](void* context, uint32_t pixels) { toldOf(context).paintsWanted.push_back(pixels); };
    events.m_pFlagClicked = [](void* context, uint64_t flag) { toldOf(context).flagsClicked.push_back(flag); };
    return events;
}

}  // namespace

SCOPERAStaticFactory scoperFactory() {
    static Library library;
    if (!library.loaded()) {
        const test::ScopedEnvironment registry("TARNO2_REGISTRY", TARNO2_BIN "/registry.d");
        const auto path = registryValue(RegistryRoot::LocalMachine, "SOFTWARE\\Kestrel Lines LTD\\SCOPERA", "path");
        std::string error = "not in the registry";
        if (!path || !library.load(joinPath(path->folder, path->data), error)) {
            ADD_FAILURE() << "The scoper library: " << error;
            return nullptr;
        }
    }
    return reinterpret_cast<SCOPERAStaticFactory>(library.symbol(TARNO2_FACTORY_NAME));
}

void ScoperFixture::SetUp() {
    const SCOPERAStaticFactory factory = scoperFactory();
    ASSERT_NE(factory, nullptr);
    scoper_.reset(static_cast<ISCOPERA*>(factory(TARNO2_SCOPERA_INTERFACE, 0)));
    ASSERT_NE(scoper_, nullptr);
    view_ = static_cast<QWidget*>(scoper_->CreateView(nullptr));
    ASSERT_NE(view_, nullptr);
    QPalette palette;
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::Text, Qt::black);
    view_->setPalette(palette);
    view_->resize(700, 500);
    const SCOPERAEvents events = eventsInto(told_);
    scoper_->SetEvents(&events);
    ASSERT_EQ(scoper_->SetRange(kScoperaAxisX, 0.0, 100.0), 1);
    ASSERT_EQ(scoper_->SetRange(kScoperaAxisY, -10.0, 10.0), 1);
    ASSERT_EQ(scoper_->SetOption(kScoperaOptionGrid, 0), 1);
}

void ScoperFixture::setColumns(const std::vector<uint32_t>& colors, double scale, double offset) {
    std::vector<SCOPERAColumn> columns;
    for (const uint32_t color : colors) {
        columns.push_back({"name", color, 1, scale, offset});
    }
    ASSERT_EQ(scoper_->SetColumns(columns.data(), static_cast<uint32_t>(columns.size())), 1);
}

void ScoperFixture::setSamples(std::vector<int16_t> samples, uint32_t columns, double step) {
    samples_ = std::move(samples);
    const SCOPERAFrames frames{samples_.data(), samples_.size() / columns, columns, kScoperaSigned16, 0.0, step};
    ASSERT_EQ(scoper_->SetFrames(&frames), 1);
}

QPoint ScoperFixture::pixelOf(double x, double y) {
    scoper_->Render();
    const QPoint places[] = {{200, 100}, {400, 300}};
    double xs[2] = {};
    double ys[2] = {};
    for (int i = 0; i < 2; ++i) {
        QMouseEvent move(QEvent::MouseMove, places[i], view_->mapToGlobal(QPointF(places[i])), Qt::NoButton,
                         Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(view_, &move);
        xs[i] = told_.mouseX;
        ys[i] = told_.mouseY;
    }
    const auto between = [](double value, const double* ends, int from, int to) {
        return static_cast<int>(std::lround(from + (value - ends[0]) / (ends[1] - ends[0]) * (to - from)));
    };
    return {between(x, xs, places[0].x(), places[1].x()), between(y, ys, places[0].y(), places[1].y())};
}

bool ScoperFixture::isColor(const QImage& image, const QPoint& place, uint32_t bgr) {
    return countColor(image, QRect(place - QPoint(1, 1), place + QPoint(1, 1)), bgr) > 0;
}

int ScoperFixture::countColor(const QImage& image, const QRect& area, uint32_t bgr) {
    const QRgb wanted =
        qRgb(static_cast<int>(bgr & 0xFF), static_cast<int>(bgr >> 8 & 0xFF), static_cast<int>(bgr >> 16 & 0xFF));
    int count = 0;
    const QRect inside = area & image.rect();
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        for (int x = inside.left(); x <= inside.right(); ++x) {
            count += image.pixel(x, y) == wanted ? 1 : 0;
        }
    }
    return count;
}

}  // namespace tarno2
