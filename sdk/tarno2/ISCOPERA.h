// SPDX-License-Identifier: MIT
//
// The plotting interface of Tarno2: the whole contract between the program, called the host here, and the library that
// draws signals. Plain C++11; no type of a standard library and no exception crosses the boundary; integers are of
// fixed width; structures are packed and their pointers are native. The library is listed in the registry under
// HKEY_LOCAL_MACHINE\SOFTWARE\Kestrel Lines LTD\SCOPERA, value "path", and exports one function, `StaticFactory`.
//
// Host and library share one Qt 6 (its shared libraries), because the view is a widget among the host's widgets.
// Everything happens on the thread of the host's windows: every call, and every call back.
//
// The library draws frames: one sample of each column a frame, in the order of the columns. A column is a curve, of an
// analog channel or of a digital line. All columns share the X axis; each has its own way from code to Y. They share
// the Y axis too, one upon the other, or they lie in lanes one below the other, each lane with a range of its own and a
// head at its left: names, newest values and levels of its columns.
//
// What the user does with the mouse: the wheel or a pinch zooms X (with Ctrl, or over the Y axis: Y), a drag moves the
// picture, a drag with Shift zooms into a rectangle, a double click asks for the automatic ranges, a click on a name in
// the legend switches its column, a click on a flag is told, and the lines of cursors and levels are dragged. Of lanes
// the border below is dragged, and the wheel over the heads scrolls; a head is clicked, or dragged onto another lane.
// Zoom, move and height happen at once; the host is told after, with the cause, and may set others.
//
// Texts are UTF-8, zero-terminated, on every system; the library copies them. Null counts as empty.

#ifndef TARNO2_ISCOPERA_H
#define TARNO2_ISCOPERA_H

#include <stddef.h>
#include <stdint.h>

#if !defined(TARNO2_CALL)
#if defined(_WIN32)
#define TARNO2_CALL __stdcall
#define TARNO2_EXPORT extern "C" __declspec(dllexport)
#else
#define TARNO2_CALL
#define TARNO2_EXPORT extern "C" __attribute__((visibility("default")))
#endif
#endif

// Version of this interface. The host uses a library only when the answer to `AbiVersion` is the number that the host
// was built with.
static const uint32_t kScoperaAbiVersion = 5;

// Most columns of a frame: 160 channels and 32 digital lines fit with room to spare.
static const uint32_t kScoperaMaxColumns = 255;

// How the samples lie in memory (m_nSampleFormat): little-endian words of 2 or 4 bytes.
enum { kScoperaSigned16 = 0, kScoperaUnsigned16 = 1, kScoperaSigned32 = 2, kScoperaUnsigned32 = 3 };

// Most flags of `SetFlags`: more than a picture has columns of pixels show nothing more.
static const uint32_t kScoperaMaxFlags = 65536;

// Most frames of `SetEarlier`.
static const uint32_t kScoperaMostEarlier = 100;

enum { kScoperaAxisX = 0, kScoperaAxisY = 1 };

// Options of `SetOption`, with the value that a new object has. An unknown one gives 0 and changes nothing.
enum {
    kScoperaOptionPoints = 1,   // 1: points, 0: lines; 0
    kScoperaOptionGrid = 2,     // 1: grid lines; 1
    kScoperaOptionLegend = 3,   // 1: the legend is shown; 0
    kScoperaOptionCursors = 4,  // 1: both cursors and their values are shown; 0. Cursors that lie outside the picture
                                // or upon each other when they are switched on come to a third and two thirds of it;
                                // their heights stay there, whatever range of Y comes, until one is placed.
    kScoperaOptionDigitsX = 5,  // decimals of the cursors' values; -1: as many as the picture's resolution needs; -1
    kScoperaOptionDigitsY = 6
};

// Texts of `SetText`, in the host's language. All are empty at first.
enum {
    kScoperaTextLabelX = 1,     // below the X axis: "Milisecond"
    kScoperaTextLabelY = 2,     // beside the Y axis: "Volts"
    kScoperaTextUnitX = 3,      // above the cursors' values: "ms"; unless the axis tells the time of day
    kScoperaTextUnitY = 4,      // "V"; unless there are lanes, which have units of their own
    kScoperaTextDifference = 5  // before the differences of the cursors: "Difference"
};

// Mouse buttons of m_pMousePressed.
enum { kScoperaLeftButton = 1, kScoperaRightButton = 2, kScoperaMiddleButton = 4 };

// Why an axis has another range, for m_pRangeChanged. It is what the user did, whatever button or key is down by the
// time the host is told. A host takes one that it doesn't know for kScoperaCauseProgram.
enum {
    kScoperaCauseWheel = 1,      // zoomed about the mouse with its wheel
    kScoperaCauseDrag = 2,       // moved with the mouse
    kScoperaCauseRectangle = 3,  // zoomed into a rectangle that was marked
    kScoperaCauseKey = 4,        // moved or zoomed with a key
    kScoperaCauseProgram = 5,    // the library by itself, without the user
    kScoperaCausePinch = 6       // zoomed with two fingers
};

#pragma pack(push, 1)

// A curve. Y = code * m_fScale + m_fOffset, in the unit of the Y axis, worked out by the host. For volts with the range
// R, the gain G and the codes Cmin to Cmax of the range's ends:
//     m_fScale = 2 * R / ((Cmax - Cmin) * G)      m_fOffset = -Cmin * m_fScale - R / G
struct SCOPERAColumn {
    const char* m_sName;  // its name in the legend
    uint32_t m_nColor;    // 0xBBGGRR
    uint32_t m_nVisible;  // 0: neither drawn nor counted in the extremes; dimmed in the legend
    double m_fScale;
    double m_fOffset;
    const char* m_sUnit;  // of its values, in the head of its lane and beside the cursors
    uint32_t m_nLane;     // the lane that it lies in; without lanes it counts for nothing
    uint32_t m_nMarked;   // 1: drawn in front of the others, and thicker
};

// A lane. The first is the uppermost one. They share the height of the picture; where they would become too low to be
// read they are scrolled.
struct SCOPERALane {
    double m_fLower;  // its range of Y
    double m_fUpper;
    uint32_t m_nHeight;  // in logical pixels; 0: what there is for it
    uint32_t m_nLow;     // 1: half as high as the others, and without a scale, as digital lines are
};

// What the head of a lane tells of a column.
struct SCOPERAReading {
    const char* m_sText;  // its newest value, without the unit
    double m_fLow;        // the least and the greatest value of late as parts of the full scale, 0 to 1, for the bar of
    double m_fHigh;       // its level; greater than m_fHigh: no bar
};

// A line at a value of a column: a threshold.
struct SCOPERALevel {
    uint32_t m_nColumn;    // in its lane, in its colour
    uint32_t m_nMovable;   // 1: the user may drag it
    double m_fY;           // in the unit of the Y axis
    const char* m_sText;   // at its right end; may be empty
    uint64_t m_nIdentity;  // for m_pLevelMoved
};

// Frames to draw. Frame i lies at X = m_fFirstX + i * m_fStepX. They may cover a part of the X range, or more than it.
//
// A span of very many frames may be handed over as pairs: for each bucket of consecutive frames one frame of the
// columns' minima and one of their maxima, with half a bucket as m_fStepX. The picture is the same as long as a bucket
// isn't wider than a pixel, because curves are drawn from the minima and maxima of each pixel column.
struct SCOPERAFrames {
    const void* m_pSamples;    // m_nFrames * m_nColumns samples, aligned to their size
    uint64_t m_nFrames;        // 0: nothing to draw
    uint32_t m_nColumns;       // samples in a frame. Columns without a SCOPERAColumn are not drawn.
    uint32_t m_nSampleFormat;  // kScoperaSigned16 ...
    double m_fFirstX;          // in the unit of the X axis
    double m_fStepX;           // greater than 0
};

// Places of both cursors, in the units of the axes.
struct SCOPERACursors {
    double m_fX[2];
    double m_fY[2];
    uint32_t m_nLane[2];  // where the values of Y count; without lanes nothing
};

// A flag at a place of the X axis: a small one at the top of the picture with a thin line below it, and its text beside
// it where there is room.
struct SCOPERAFlag {
    double m_fX;           // in the unit of the X axis
    const char* m_sText;   // may be empty
    uint64_t m_nIdentity;  // for m_pFlagClicked
};

// Calls back to the host. Each gets m_pContext first; those that are null are left out. During any of them the host may
// call everything but `Release`.
struct SCOPERAEvents {
    void* m_pContext;
    // An axis was zoomed or moved, and the picture has this range now. Cause: kScoperaCauseWheel ... A rectangle
    // changes both axes, X first.
    void(TARNO2_CALL* m_pRangeChanged)(void* context, int32_t axis, double lower, double upper, int32_t cause);
    // A double click: the user wants both axes as the host finds best.
    void(TARNO2_CALL* m_pAutomaticWanted)(void* context);
    // A click on the legend or in the head of a lane switched a column; `SetColumns` with the same state need not
    // follow.
    void(TARNO2_CALL* m_pColumnSwitched)(void* context, uint32_t column, int32_t visible);
    // The mouse is over the picture at this place, or has left it (inside 0, the place counts for nothing). `lane` is
    // the one that the place is in, to which `y` belongs; -1 without lanes.
    void(TARNO2_CALL* m_pMouseMoved)(void* context, double x, double y, int32_t inside, int32_t lane);
    // A mouse button went down somewhere on the widget; the place is in the units of the axes, and may lie outside the
    // ranges. The right button means nothing to the library: it is the host's, for a menu.
    void(TARNO2_CALL* m_pMousePressed)(void* context, int32_t button, double x, double y);
    // The user moved a cursor.
    void(TARNO2_CALL* m_pCursorsMoved)(void* context, const SCOPERACursors* cursors);
    // The picture is about to be drawn for the first time after the view was shown, or with a new width: a chance to
    // hand over frames that suit it. `pixels` is the width between the ends of the X axis, in the screen's pixels.
    void(TARNO2_CALL* m_pPaintWanted)(void* context, uint32_t pixels);
    // The left button was pressed on a flag or its text.
    void(TARNO2_CALL* m_pFlagClicked)(void* context, uint64_t identity);
    // A lane was zoomed or moved, and has this range now.
    void(TARNO2_CALL* m_pLaneRangeChanged)(void* context, uint32_t lane, double lower, double upper, int32_t cause);
    // The border below a lane was dragged, and it has this height now, in logical pixels.
    void(TARNO2_CALL* m_pLaneResized)(void* context, uint32_t lane, uint32_t height);
    // The head of a column was clicked.
    void(TARNO2_CALL* m_pHeadClicked)(void* context, uint32_t column);
    // The head of a column was dragged onto that lane. The host gives columns and lanes anew.
    void(TARNO2_CALL* m_pHeadDropped)(void* context, uint32_t column, uint32_t lane);
    // The user wants to see the column alone, or all again.
    void(TARNO2_CALL* m_pSoloWanted)(void* context, uint32_t column);
    // The user drags a level, which lies there now. `done` is 0 while the mouse still holds it.
    void(TARNO2_CALL* m_pLevelMoved)(void* context, uint64_t identity, double y, int32_t done);
};

#pragma pack(pop)

// ---------------------------------------------------------------------------------------------------------------------
// The plotting object: one object, one view. The methods' order is the interface: the table of virtual functions holds
// exactly these slots, in this order, so there is no virtual destructor and nothing is inserted. Before `CreateView`
// everything but `AbiVersion`, `Release` and `CreateView` gives 0 or does nothing.
//
// Changes are drawn together at the next turn of the event loop. A hidden view costs nothing: it draws when it is
// shown.

struct ISCOPERA {
    // 0: kScoperaAbiVersion of the library.
    virtual uint32_t TARNO2_CALL AbiVersion() = 0;
    // 1: the host drops the object, which is gone after this call, with its view. The library stays loaded until the
    // program ends, because Qt remembers types that it made known.
    virtual void TARNO2_CALL Release() = 0;
    // 2: makes the view as a child of the host's QWidget (null: a window of its own), to be put in a layout and shown
    // by the host. It takes colours from its palette. The result is the view's QWidget; when there is a view already,
    // that one. Null: it could not be made. The view belongs to the object. When Qt deletes it with its parent, the
    // object stays usable without a view until `Release`.
    virtual void* TARNO2_CALL CreateView(void* parent) = 0;
    // 3: the view's QWidget; null when there is none.
    virtual void* TARNO2_CALL View() = 0;
    // 4: who is told what; copied. Null: nobody.
    virtual void TARNO2_CALL SetEvents(const SCOPERAEvents* events) = 0;
    // 5: the curves, in the order of a frame's samples; copied. Where curves cross, the earlier one lies in front.
    // 1: taken; 0: more than kScoperaMaxColumns.
    virtual int32_t TARNO2_CALL SetColumns(const SCOPERAColumn* columns, uint32_t count) = 0;
    // 6: shows these frames instead of the earlier ones. The samples are not copied: they belong to the host and have
    // to stay where they are until the next `SetFrames` (null or no frames: nothing is shown) or `Release`, because a
    // zoom reads them again. When the host changes samples in place, it calls `SetFrames` again before it returns to
    // the event loop. 1: taken; 0: refused for a wrong field, and nothing is shown.
    virtual int32_t TARNO2_CALL SetFrames(const SCOPERAFrames* frames) = 0;
    // 7: what the axis shows; `m_pRangeChanged` is not called. 1: taken; 0: no such axis, or the range is empty or not
    // finite.
    virtual int32_t TARNO2_CALL SetRange(int32_t axis, double lower, double upper) = 0;
    // 8: what the axis shows. 1: told.
    virtual int32_t TARNO2_CALL GetRange(int32_t axis, double* lower, double* upper) = 0;
    // 9: the least and the greatest Y of the visible columns within the X range, for an automatic scale. It costs
    // nothing beyond what the next paint needs anyway. 1: told; 0: there is no sample.
    virtual int32_t TARNO2_CALL GetExtremes(double* lowest, double* highest) = 0;
    // 10: changes an option, kScoperaOption... 1: done.
    virtual int32_t TARNO2_CALL SetOption(uint32_t option, int32_t value) = 0;
    // 11: the present value of an option; the user can't change one. 1: told.
    virtual int32_t TARNO2_CALL GetOption(uint32_t option, int32_t* value) = 0;
    // 12: changes a text, kScoperaText... 1: done.
    virtual int32_t TARNO2_CALL SetText(uint32_t code, const char* text) = 0;
    // 13: the font of axes, legend and cursors. An empty name or a size of 0 leaves that as it is. 1: taken.
    virtual int32_t TARNO2_CALL SetFont(const char* family, int32_t points) = 0;
    // 14, 15: where the cursors are, also while they aren't shown. 1: taken, told; 0: a place is not finite.
    virtual int32_t TARNO2_CALL SetCursors(const SCOPERACursors* cursors) = 0;
    virtual int32_t TARNO2_CALL GetCursors(SCOPERACursors* cursors) = 0;
    // 16: the width between the ends of the X axis in the screen's pixels; 0 without a view. More frames than a few for
    // each pixel show nothing more.
    virtual uint32_t TARNO2_CALL PixelWidth() = 0;
    // 17: draws now what has changed, hidden or not, without waiting for the event loop. 1: drawn.
    virtual int32_t TARNO2_CALL Render() = 0;
    // 18: saves the picture as it is shown: as SVG when the file's name ends in ".svg", with the curves as a picture of
    // the screen's resolution within it; else as PNG. 1: saved; 0: the file can't be written.
    virtual int32_t TARNO2_CALL SavePicture(const char* file) = 0;
    // 19: puts the picture as it is shown on the clipboard, as pixels and as SVG. 1: done.
    virtual int32_t TARNO2_CALL CopyPicture() = 0;
    // 20: shows these flags instead of the earlier ones; copied, in any order. 1: taken; 0: more than kScoperaMaxFlags,
    // or a place is not finite, and the earlier ones stay.
    virtual int32_t TARNO2_CALL SetFlags(const SCOPERAFlag* flags, uint32_t count) = 0;
    // 21: shows these lanes; copied. None: all columns lie on the Y axis. The columns that name a lane have to be set
    // before or after it, before the picture is drawn; those of lanes that are not there are not drawn. 1: taken; 0:
    // more than kScoperaMaxColumns, or a range is empty or not finite, and the earlier ones stay.
    virtual int32_t TARNO2_CALL SetLanes(const SCOPERALane* lanes, uint32_t count) = 0;
    // 22: like `GetExtremes`, of one column, whether it is visible or not.
    virtual int32_t TARNO2_CALL GetColumnExtremes(uint32_t column, double* lowest, double* highest) = 0;
    // 23: what the heads tell, in the order of the columns; copied. 1: taken.
    virtual int32_t TARNO2_CALL SetReadings(const SCOPERAReading* readings, uint32_t count) = 0;
    // 24: shows these levels instead of the earlier ones; copied. 1: taken; 0: more than kScoperaMaxFlags, or a value
    // is not finite, and the earlier ones stay.
    virtual int32_t TARNO2_CALL SetLevels(const SCOPERALevel* levels, uint32_t count) = 0;
    // 25: scrolls so that the lane can be seen. 1: done; 0: no such lane.
    virtual int32_t TARNO2_CALL ShowLane(uint32_t lane) = 0;
    // 26: the X axis and the cursors tell the time of day, hh:mm:ss.fff, with ticks at round steps of a clock, and the
    // date at midnight. `start`: of X = 0, microseconds since the beginning of 1970 by the same clock.
    // `secondsPerUnit`: seconds in a unit of the X axis; 0: they tell numbers again. 1: taken; 0: it is below 0 or not
    // finite.
    virtual int32_t TARNO2_CALL SetClockX(int64_t start, double secondsPerUnit) = 0;
    // 27: draws these frames too, behind those of `SetFrames` and the paler the later they stand in the list: what the
    // same columns were before. They are subject to the rules of `SetFrames`, and count in the extremes. Null or 0:
    // none. 1: taken; 0: more than kScoperaMostEarlier, or one is refused for a wrong field, and none is drawn.
    virtual int32_t TARNO2_CALL SetEarlier(const SCOPERAFrames* frames, uint32_t count) = 0;
};

// The library's only export. `interfaceName` is "ISCOPERA" and `flags` 0; null when the library has no such interface
// or can't make an object. Each call makes a new object. A QApplication has to be there before `CreateView`.
//     TARNO2_EXPORT void* TARNO2_CALL StaticFactory(const char* interfaceName, uint32_t flags);
typedef void*(TARNO2_CALL* SCOPERAStaticFactory)(const char* interfaceName, uint32_t flags);

#if !defined(TARNO2_FACTORY_NAME)
#define TARNO2_FACTORY_NAME "StaticFactory"
#endif
#define TARNO2_SCOPERA_INTERFACE "ISCOPERA"

// ---------------------------------------------------------------------------------------------------------------------
// The layout, checked by every compiler that meets this header.

static_assert(sizeof(double) == 8, "double is 64-bit");
static_assert(sizeof(SCOPERAColumn) == 32 + 2 * sizeof(void*), "");
static_assert(offsetof(SCOPERAColumn, m_nColor) == sizeof(void*), "");
static_assert(offsetof(SCOPERAColumn, m_nVisible) == 4 + sizeof(void*), "");
static_assert(offsetof(SCOPERAColumn, m_fScale) == 8 + sizeof(void*), "");
static_assert(offsetof(SCOPERAColumn, m_fOffset) == 16 + sizeof(void*), "");
static_assert(offsetof(SCOPERAColumn, m_sUnit) == 24 + sizeof(void*), "");
static_assert(offsetof(SCOPERAColumn, m_nLane) == 24 + 2 * sizeof(void*), "");
static_assert(offsetof(SCOPERAColumn, m_nMarked) == 28 + 2 * sizeof(void*), "");
static_assert(sizeof(SCOPERALane) == 24 && offsetof(SCOPERALane, m_nHeight) == 16, "");
static_assert(sizeof(SCOPERAReading) == 16 + sizeof(void*) && offsetof(SCOPERAReading, m_fLow) == sizeof(void*), "");
static_assert(sizeof(SCOPERALevel) == 24 + sizeof(void*) && offsetof(SCOPERALevel, m_fY) == 8, "");
static_assert(offsetof(SCOPERALevel, m_nIdentity) == 16 + sizeof(void*), "");
static_assert(sizeof(SCOPERAFrames) == 32 + sizeof(void*), "");
static_assert(offsetof(SCOPERAFrames, m_nFrames) == sizeof(void*), "");
static_assert(offsetof(SCOPERAFrames, m_nColumns) == 8 + sizeof(void*), "");
static_assert(offsetof(SCOPERAFrames, m_nSampleFormat) == 12 + sizeof(void*), "");
static_assert(offsetof(SCOPERAFrames, m_fFirstX) == 16 + sizeof(void*), "");
static_assert(offsetof(SCOPERAFrames, m_fStepX) == 24 + sizeof(void*), "");
static_assert(sizeof(SCOPERACursors) == 40 && offsetof(SCOPERACursors, m_fY) == 16, "");
static_assert(sizeof(SCOPERAFlag) == 16 + sizeof(void*) && offsetof(SCOPERAFlag, m_nIdentity) == 8 + sizeof(void*), "");
static_assert(sizeof(SCOPERAEvents) == 15 * sizeof(void*), "");
static_assert(offsetof(SCOPERAEvents, m_pPaintWanted) == 7 * sizeof(void*), "");
static_assert(offsetof(SCOPERAEvents, m_pFlagClicked) == 8 * sizeof(void*), "");
static_assert(offsetof(SCOPERAEvents, m_pLevelMoved) == 14 * sizeof(void*), "");

#endif  // TARNO2_ISCOPERA_H
