#include "tests/scopera/scoper_fixture.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPalette>
#include <QTest>
#include <QWheelEvent>
#include <cmath>
#include <limits>

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
    events.m_pMouseMoved = [](void* context, double x, double y, int32_t inside, int32_t lane) {
        toldOf(context).mouseX = x;
        toldOf(context).mouseY = y;
        toldOf(context).mouseInside = inside;
        toldOf(context).mouseLane = lane;
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
    events.m_pLaneRangeChanged = [](void* context, uint32_t lane, double lower, double upper, int32_t cause) {
        toldOf(context).lane = {lane, lower, upper, cause};
    };
    events.m_pLaneResized = [](void* context, uint32_t lane, uint32_t height) {
        toldOf(context).laneHeight = {lane, height};
    };
    events.m_pHeadClicked = [](void* context, uint32_t column) { toldOf(context).clickedHead = column; };
    events.m_pHeadDropped = [](void* context, uint32_t column, uint32_t lane) {
        toldOf(context).droppedHead = {column, lane};
    };
    events.m_pSoloWanted = [](void* context, uint32_t column) { toldOf(context).solo = column; };
    events.m_pLevelMoved = [](void* context, uint64_t identity, double y, int32_t done) {
        toldOf(context).level = {identity, y, done};
    };
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
    columns.reserve(colors.size());
    for (const uint32_t color : colors) {
        columns.push_back({"name", color, 1, scale, offset, "", 0, 0});
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
        moveMouse(places[i]);
        xs[i] = told_.mouseX;
        ys[i] = told_.mouseY;
    }
    const auto between = [](double value, const double* ends, int from, int to) {
        return static_cast<int>(std::lround(from + (value - ends[0]) / (ends[1] - ends[0]) * (to - from)));
    };
    return {between(x, xs, places[0].x(), places[1].x()), between(y, ys, places[0].y(), places[1].y())};
}

QPoint ScoperFixture::pixelOf(double x, int32_t lane, double y) {
    const int column = pixelOf(x, 0.0).x();
    QPoint nearest;
    double distance = std::numeric_limits<double>::infinity();
    for (int row = 0; row < view_->height(); ++row) {
        moveMouse({column, row});
        if (told_.mouseInside == 1 && told_.mouseLane == lane && std::abs(told_.mouseY - y) < distance) {
            distance = std::abs(told_.mouseY - y);
            nearest = {column, row};
        }
    }
    return nearest;
}

bool ScoperFixture::isTinted(const QImage& image, const QPoint& place, uint32_t bgr) {
    const QColor wanted(static_cast<int>(bgr & 0xFF), static_cast<int>(bgr >> 8 & 0xFF),
                        static_cast<int>(bgr >> 16 & 0xFF));
    const auto distance = [](const QColor& a, const QColor& b) {
        return std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) + std::abs(a.blue() - b.blue());
    };
    for (int y = place.y() - 1; y <= place.y() + 1; ++y) {
        for (int x = place.x() - 1; x <= place.x() + 1; ++x) {
            const QColor color = image.pixelColor(x, y);
            if (distance(color, wanted) < distance(color, Qt::white)) {
                return true;
            }
        }
    }
    return false;
}

void ScoperFixture::moveMouse(const QPoint& place, Qt::MouseButtons held, Qt::KeyboardModifiers modifiers) {
    QMouseEvent move(QEvent::MouseMove, place, view_->mapToGlobal(QPointF(place)), Qt::NoButton, held, modifiers);
    QApplication::sendEvent(view_, &move);
}

void ScoperFixture::wheel(const QPoint& place, int notches, Qt::KeyboardModifiers modifiers) {
    QWheelEvent event(place, view_->mapToGlobal(QPointF(place)), {}, QPoint(0, 120 * notches), Qt::NoButton, modifiers,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(view_, &event);
}

void ScoperFixture::drag(const QPoint& from, const QPoint& to, Qt::KeyboardModifiers modifiers,
                         Qt::KeyboardModifiers atRelease) {
    QTest::mousePress(view_, Qt::LeftButton, modifiers, from);
    for (int i = 1; i <= 4; ++i) {
        moveMouse(from + (to - from) * i / 4, Qt::LeftButton, modifiers);
    }
    QTest::mouseRelease(view_, Qt::LeftButton, atRelease, to);
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
