// SPDX-License-Identifier: MIT
//
// The driver interface of Tarno2: what a host and a driver call. The author of a board driver includes driver.h beside
// it, whose base class answers these calls. Plain C++11; no type of a standard library and no exception crosses the
// boundary; integers are of fixed width; structures are packed and their pointers are native. A driver is a shared
// library that exports one function, `StaticFactory`, and is listed in the registry under
// HKEY_LOCAL_MACHINE\SOFTWARE\Kestrel Lines LTD\Drivers\1.0\<name>, value "path". docs/drivers.md tells how to write,
// build and install one; sdk/example is a small one that builds alone.
//
// Texts are single-byte, zero-terminated, in the system's code page (UTF-8 outside Windows).
// Unless a slot says otherwise, the host calls from one thread at a time, but not always from the same one: `Setup`,
// `Start`, `Stop`, `GetData` and the queries of a running measurement come from the acquisition thread.
// The driver may use threads of its own and has to stop them in `Stop` and `Release`.

#ifndef TARNO2_IADCDEVICE_H
#define TARNO2_IADCDEVICE_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#define TARNO2_CALL __stdcall
#define TARNO2_EXPORT extern "C" __declspec(dllexport)
#else
#define TARNO2_CALL
#define TARNO2_EXPORT extern "C" __attribute__((visibility("default")))
#endif

// Version of this interface. A host loads a driver only when the driver's answer to `kADCGetAbiVersion` is the number
// that the host was built with. Codes that are added later do not change it.
static const uint32_t kADCAbiVersion = 1;

// ---------------------------------------------------------------------------------------------------------------------
// Parameter blocks: `Setup` takes a pointer to either; `m_nType` tells which. The driver may correct any field to what
// the board can do (frequency, block size, channels); the host takes the corrected values over.

enum {
    kADCTypeDMA = 1,   // ADCParametersDMA
    kADCTypeDMAEX = 4  // ADCParametersDMAEX
};

// Bits of m_nStartOf
enum {
    kADCStartByProgram = 0x2,  // the measurement begins with `Start`
    kADCStartExternal = 0x4,   // the board waits for an external start signal or runs from an external clock
    kADCStartRing = 0x1000000  // endless acquisition into the ring; set in every block of this host
};

// Bits of m_nControl
enum {
    kADCControlDifferential = 0x2,   // differential inputs
    kADCControlExternalStart = 0x10  // external start; set in the check pass only
};

#pragma pack(push, 1)

// Base block. All fields are 32-bit little-endian.
struct ADCParametersDMA {
    int32_t m_nType;          // kADCTypeDMA
    int32_t m_nSizeOf;        // 52
    int32_t m_nStartOf;       // start source, kADCStart...
    int32_t m_nIntOf;         // -1
    int32_t m_nDMABlockSize;  // samples wished for in the ring: half a second's worth, at most the driver's maximum
    int32_t m_nDMAMode;       // 0x1000000
    float m_fFreqStart;     // Hz; the total over all channels, or a channel's when kADCGetPerChannelFrequency says so;
                            // 0 with an external clock
    int32_t m_nTimerStart;  // 0
    float m_fFreqPack;      // packets (frames) per second in packet mode, else 0
    int32_t m_nTimerPack;   // 1 in packet mode, else -1
    int32_t m_nFirstChannel;   // number of the first channel of the list
    int32_t m_nChannelNumber;  // count of channels
    int32_t m_nGain;           // gain of the first channel
};

// Extended block, for boards that answer 1 to kADCGetExtendedBlock. The arrays belong to the host and stay valid during
// the call; the driver may change their contents and shorten the list (m_nSize), not lengthen it.
struct ADCParametersDMAEX {
    int32_t m_nType;          // kADCTypeDMAEX
    int32_t m_nSizeOf;        // 40 with 64-bit pointers, 32 with 32-bit ones
    int32_t* m_pnGains;       // gain of each channel
    int32_t* m_pnChannels;    // number of each channel, in the order of the samples of a frame
    int32_t m_nSize;          // count of channels
    int32_t m_nControl;       // kADCControl...
    int32_t m_nSyncLevel[2];  // 0, 0
};

// Answer to kADCGetRing.
struct ADCRingInfo {
    uint32_t m_nRingSize;   // samples in the ring; a multiple of 2 x channels
    uint8_t m_nReserved;    // the driver writes 0
    uint32_t m_hDataEvent;  // set once each time another half of the ring is full: on Windows the HANDLE of a
                            // manual-reset event, elsewhere an eventfd number, to which the driver writes 1. The host
                            // resets (reads) it and never closes it. It has to be valid: 0 is no eventfd.
};

// Answer to kADCGetBoardList. The host gives the array; the driver fills at most m_nCapacity entries and sets m_nCount
// to the number of its boards.
struct ADCBoardEntry {
    uint32_t m_nNumber;  // number of the board, from 1
    char m_sName[124];   // its number as three hexadecimal digits, a blank, its name: "001 ADC16 (16 channels)"
};
struct ADCBoardList {
    uint32_t m_nCapacity;
    uint32_t m_nCount;
    ADCBoardEntry* m_pEntries;
};

// Answer to kADCGetSampleFormat: how a sample word is laid out. Analog code and digital port may share the word.
struct ADCSampleFormat {
    uint32_t m_nBytes;          // bytes per sample: 2 or 4, little-endian
    uint32_t m_nCodeBits;       // bits of the analog code
    uint32_t m_nCodeShift;      // right shift that brings the code's lowest bit to bit 0
    uint32_t m_nCodeMask;       // the code's bits in the word (before the shift)
    uint32_t m_nDigitalShift;   // right shift that brings digital line 0 to bit 0
    uint32_t m_nDigitalMask;    // the digital lines' bits in the word (before the shift); 0: no lines in the word
    uint32_t m_nDigitalLines;   // count of digital lines in the word
    uint32_t m_nSignedCodes;    // 1: codes are two's complement, 0: unsigned
    uint32_t m_nBackwardOrder;  // 1: the samples of a frame come in reverse order of the channel list
    uint32_t m_nFormatFlags;    // bit 0: 0 - lines below the code (lines 0 .. code shift - 1), 1 - code below the lines
};

// Answer to kADCGetCodeRange: the codes of the lower and upper end of an input range.
struct ADCCodeRange {
    int32_t m_nMinimum;
    int32_t m_nMaximum;
};

// kADCGetInputRange: the host fills channel and gain. The input goes from -R / gain to +R / gain volts, with R the
// range that the driver gives here (a gain of 0 counts as 1).
struct ADCInputRange {
    int32_t m_nChannel;
    int32_t m_nGain;
    float m_fRange;  // R, volts, greater than 0
};

// kADCGetInputLimits: the host fills channel and gain (one of kADCGetGainList); the driver gives the voltages of the
// lowest and the highest code. For boards whose inputs don't lie evenly around zero, or whose gains don't divide.
struct ADCInputLimits {
    int32_t m_nChannel;
    int32_t m_nGain;
    double m_fLower;  // volts
    double m_fUpper;  // volts, above m_fLower
};

// kADCGetChannelName, kADCGetChannelUnit: the host fills the channel; the driver gives a text in UTF-8 on every system,
// ended by a zero, without control characters and semicolons.
struct ADCChannelText {
    int32_t m_nChannel;
    char m_sText[124];
};

// Answer to kADCGetStreamEnd.
struct ADCStreamEnd {
    uint32_t m_nCause;     // kADCEnd...
    uint32_t m_nReserved;  // the driver writes 0
    uint64_t m_nPosition;  // samples since Start, whole frames: the first one that is not there. All before it are
    uint64_t m_nLost;      // samples that were lost from there on; 0: not known
};

// Answer to kADCGetMark: something that happened, to be marked in the stream.
struct ADCMark {
    uint32_t m_nThere;     // 1: this is one; 0: there is none now
    uint32_t m_nReserved;  // the driver writes 0
    uint64_t m_nPosition;  // samples since Start: the sample at which it happened
    char m_sText[240];     // what happened; may be empty
};

// One thing that a driver wants to be told: an entry of kADCGetSettings. Texts are zero-terminated; the captions are
// UTF-8 on every system, key and values are single-byte as elsewhere (UTF-8 outside Windows).
struct ADCSetting {
    char m_sKey[32];    // letters and digits: its name in settings files
    uint32_t m_nType;   // kADCSetting...
    uint32_t m_nFlags;  // kADCSettingFixed, ...
    double m_fMinimum;  // of an integer or real number; both 0: no bounds
    double m_fMaximum;
    char m_sCaption[96];     // in English, without a colon: "Sample rate, Hz"
    char m_sCaptionRu[160];  // in Russian
    char m_sValue[512];      // the value in use now, a number in the "C" locale
    char m_sChoices[4096];   // of a choice: its values, each ended by a line feed; of a file: name patterns ("*.wav")
    char m_sChoiceTexts[4096];  // what the user reads for each of them, ended likewise; empty: the values themselves
};
struct ADCSettingList {
    uint32_t m_nCapacity;
    uint32_t m_nCount;
    ADCSetting* m_pEntries;
};

// Value of kADCSetSetting. Both texts are the host's and valid during the call.
struct ADCSettingValue {
    const char* m_sKey;
    const char* m_sValue;  // a number in the "C" locale; an empty text: the driver's own default
};

// Answers that are lists of 32-bit integers or floats; capacity and count as in ADCBoardList.
struct ADCIntList {
    uint32_t m_nCapacity;
    uint32_t m_nCount;
    int32_t* m_pnValues;
};
struct ADCFloatList {
    uint32_t m_nCapacity;
    uint32_t m_nCount;
    float* m_pfValues;
};

// Answer to kADCGetFrequencyLimits, Hz, of m_fFreqStart.
struct ADCFrequencyLimits {
    float m_fMinimum;
    float m_fMaximum;
};

#pragma pack(pop)

// ---------------------------------------------------------------------------------------------------------------------
// Codes of `Get`. The result's type stands behind each. An unknown code, and one that the board has no answer to, gives
// 0 and leaves the result alone; so an old driver works with a new host. New codes get new numbers.
//
// "Board" codes answer for the board chosen with `SelectBoard` and may be asked at any time after it; "running" codes
// may be asked from `Start` on.
enum {
    kADCGetMaxBufferOld = 48,  // uint32_t  board: as kADCGetMaxBuffer; asked only when that fails
    kADCGetMaxBuffer = 70,     // uint32_t  board: largest ring in samples
    kADCGetRing = 71,          // ADCRingInfo  after an accepted Setup(1, ...)

    kADCGetHotPlugPresence = 0x5A5A0101,      // uint32_t  running: 0 - the board was pulled out
    kADCGetAbiVersion = 0x5A5A0201,           // uint32_t  kADCAbiVersion; every driver answers, before SelectBoard too
    kADCGetBoardList = 0x5A5A0202,            // ADCBoardList  before SelectBoard too; an empty list: no board found
    kADCGetSampleFormat = 0x5A5A0203,         // ADCSampleFormat  board; required
    kADCGetCodeRange = 0x5A5A0204,            // ADCCodeRange  board; required
    kADCGetInputRange = 0x5A5A0205,           // ADCInputRange  board; required
    kADCGetGainList = 0x5A5A0206,             // ADCIntList  board: gains to choose from; without it only gain 1
    kADCGetChannelCount = 0x5A5A0207,         // uint32_t  board: physical channels, numbered from 0; required, 1 to 160
    kADCGetFrequencyList = 0x5A5A0208,        // ADCFloatList  board: the only frequencies; without it any within limits
    kADCGetFrequencyLimits = 0x5A5A0209,      // ADCFrequencyLimits  board
    kADCGetBoardModes = 0x5A5A020A,           // uint32_t  board: modes it can do, kADCMode...; without it none
    kADCGetCutMode = 0x5A5A020B,              // uint32_t  board: 1 - a recording may be cut into pieces; without it 1
    kADCGetExtendedBlock = 0x5A5A020C,        // uint32_t  board: 1 - takes ADCParametersDMAEX; without it 0
    kADCGetPerChannelFrequency = 0x5A5A020D,  // uint32_t  board: 1 - m_fFreqStart counts per channel; without it 0
    kADCGetHotPlug = 0x5A5A020E,              // uint32_t  board: 1 - can be unplugged, answers kADCGetHotPlugPresence
    kADCGetHardwareAverage = 0x5A5A020F,      // uint32_t  board: 1 - kADCSetHardwareAverage is there; without it 0
    kADCGetPreHistory = 0x5A5A0210,           // uint32_t  board: 1 - GetData has a pre-history portion; without it 0
    kADCGetSamplesWritten = 0x5A5A0211,       // uint64_t  running: samples put into the ring since Start. Counts up as
                                              // they come in, not only by halves. The host asks after each GetData, and
                                              // by then the count tells of every sample that was overwritten meanwhile.
    kADCGetSynchronousChannels = 0x5A5A0212,  // uint32_t  board: 1 - channels of a frame are sampled at one moment
    kADCGetBoardFrequency = 0x5A5A0213,       // float  board: Hz; a frequency that suits it, to start a selector with
    kADCGetDrqList = 0x5A5A0214,              // ADCIntList  board: DRQ numbers to choose from; without it no choice
    kADCGetStreamEnd = 0x5A5A0215,            // ADCStreamEnd  running: whether, where and why the stream of samples has
                                              // ended by itself. With the end the driver sets the data event, and
                                              // LastError has the words. The host then reads what lies before it.
    kADCGetSettings = 0x5A5A0216,     // ADCSettingList  before SelectBoard too: what the driver wants to be told
    kADCGetInputLimits = 0x5A5A0217,  // ADCInputLimits  board: without it the range of kADCGetInputRange
    kADCGetBoardSearch = 0x5A5A0218,  // uint32_t  before SelectBoard too: 1 - boards are still being searched for
                                      // and kADCGetBoardList may grow; without it 0
    kADCGetChannelName = 0x5A5A0219,  // ADCChannelText  board: what an input is called where its user has no name for
                                      // it; without it its number alone
    kADCGetChannelUnit = 0x5A5A021A,  // ADCChannelText  board: what the volts of an input really are ("mA"), where its
                                      // user names no unit; without it volts
    kADCGetMark = 0x5A5A021B          // ADCMark  running: the oldest mark that was not asked for yet. Answered from
                                      // `Start` on, or it isn't asked again. The host asks with every look at the ring,
                                      // until there is none
};

// Why a stream has ended (ADCStreamEnd::m_nCause).
enum {
    kADCEndNone = 0,       // it goes on
    kADCEndLost = 1,       // the board lost samples
    kADCEndUnplugged = 2,  // the board is not there any more
    kADCEndOfSource = 3,   // the source has come to its end: nothing is missing
    kADCEndError = 4       // the board failed
};

// Types of a setting (ADCSetting::m_nType), and its flags.
enum {
    kADCSettingText = 0,
    kADCSettingInteger = 1,
    kADCSettingReal = 2,
    kADCSettingChoice = 3,  // one of m_sChoices
    kADCSettingFile = 4,    // path of a file that is there
    kADCSettingFolder = 5
};
enum {
    kADCSettingFixed = 0x1,  // the environment decides: shown, but not to be changed
    kADCSettingFree = 0x2    // of a choice: a value that is not in the list is taken too
};

// Bits of kADCGetBoardModes
enum { kADCModeExternalStart = 0x1, kADCModeDifferential = 0x2, kADCModePacket = 0x4, kADCModeExternalClock = 0x8 };

// Codes of `Set`. An unknown one gives 0 and changes nothing.
enum {
    kADCSetHardwareAverage = 0x5A5A0301,  // uint32_t  1 - the board averages its samples, 0 - it does not
    kADCSetDrq = 0x5A5A0302,              // int32_t  one of kADCGetDrqList; 0 when it is taken by somebody else
    kADCSetSetting = 0x5A5A0303,     // ADCSettingValue  before SelectBoard too, not while a measurement runs. 0: no
                                     // such key, or a value that can't be; LastError says which. Gives the chosen
                                     // board up when it may not be there any more: the host asks for the boards anew
    kADCSetBoardSearch = 0x5A5A0304  // uint32_t 1  looks for boards anew, also those plugged in meanwhile
};

// Modes of `GetData`, and its results.
enum {
    kADCDataShort = 1,                // 2-byte samples
    kADCDataLong = 3,                 // 4-byte samples
    kADCDataPreHistory = 0x40000000,  // the pre-history portion, from drivers that have one
    kADCDataFailed = -2               // `GetData`: the transfer failed; in pre-history mode: the portion has ended
};

// ---------------------------------------------------------------------------------------------------------------------
// The device. The methods' order is the interface: the table of virtual functions holds exactly these slots, in this
// order, so there is no virtual destructor and nothing is inserted. A slot that a driver has no use for still stands
// there and returns what its text says for that case. The library catches its own exceptions.

struct IADCDevice {
    // 0: another interface of the same device by its name; null when there is none. Not owned by the caller.
    virtual void* TARNO2_CALL QueryInterface(const char* name) = 0;
    // 1: the host drops the object, which is gone after this call. A running measurement was stopped before.
    virtual void TARNO2_CALL Release() = 0;
    // 2: chooses the board, by its number in the board list, that all further calls mean. 1: there and usable; 0: not
    // there or taken, and no board is chosen. Choosing the same board again is allowed and looks for it anew.
    virtual int32_t TARNO2_CALL SelectBoard(uint32_t number) = 0;
    // 3: gives the chosen board up, so that another program can have it. 1, also when none is chosen.
    virtual int32_t TARNO2_CALL CloseBoard() = 0;
    // 4: checks (apply = 0) or applies (apply = 1) a parameter block; the third argument is 0. 1: accepted, fields that
    // the board can't do were corrected in place; 0: refused. An applied base block makes the ring, anew each time; the
    // host may apply it a second time with another m_nDMABlockSize before it starts.
    virtual int32_t TARNO2_CALL Setup(int32_t apply, void* block, int32_t zero) = 0;
    // 5: begins the measurement with an empty ring. 1: it runs.
    virtual int32_t TARNO2_CALL Start() = 0;
    // 6: ends the measurement. What the ring holds may be read until the next Setup or Start. Harmless when nothing
    // runs.
    virtual void TARNO2_CALL Stop() = 0;
    // 7: copies `count` samples from sample position `offset` of the ring, which lie in one stretch, to `destination`.
    // Anything but kADCDataFailed: done.
    virtual int32_t TARNO2_CALL GetData(int32_t mode, void* destination, uint32_t count, uint32_t offset) = 0;
    // 8: why the last call that returned 0 or kADCDataFailed did so, in English, cut to `size` with its closing zero.
    // 1: there is a text; 0: nothing to tell, and the buffer holds an empty string.
    virtual int32_t TARNO2_CALL LastError(char* text, uint32_t size) = 0;
    // 9: answers a query, kADCGet... 1: answered. May be called from any thread, also while another call runs.
    virtual int32_t TARNO2_CALL Get(uint32_t code, void* result) = 0;
    // 10: changes an option, kADCSet... 1: done.
    virtual int32_t TARNO2_CALL Set(uint32_t code, const void* value) = 0;
    // 11: the state of the board's digital inputs now, line 0 in bit 0, outside the sample stream. 0: no such port.
    virtual int32_t TARNO2_CALL ReadPort(uint32_t* lines) = 0;
    // 12: sets the board's digital outputs. 0: no such port.
    virtual int32_t TARNO2_CALL WritePort(uint32_t lines) = 0;
    // 13: sets an analog output, volts. 0: no such output or out of range.
    virtual int32_t TARNO2_CALL WriteAnalog(uint32_t output, float volts) = 0;
    // 14: called once, after the object was made and before anything else but Get(kADCGetAbiVersion): the folder of the
    // program's settings, without a separator at its end, where the driver may keep a settings file of its own.
    // 1: taken note of; 0: a settings file is there but can't be used (the host logs LastError and goes on).
    virtual int32_t TARNO2_CALL SetProgramDirectory(const char* folder) = 0;
};

// The library's only export. `interfaceName` is "IADCDevice" and `flags` 0; null when the library has no such
// interface or can't make a device. Each call makes a new object.
//     TARNO2_EXPORT void* TARNO2_CALL StaticFactory(const char* interfaceName, uint32_t flags);
typedef void*(TARNO2_CALL* ADCStaticFactory)(const char* interfaceName, uint32_t flags);

#define TARNO2_FACTORY_NAME "StaticFactory"
#define TARNO2_DEVICE_INTERFACE "IADCDevice"

// ---------------------------------------------------------------------------------------------------------------------
// The layout, checked by every compiler that meets this header.

static_assert(sizeof(float) == 4, "float is 32-bit");
static_assert(sizeof(ADCParametersDMA) == 52, "");
static_assert(offsetof(ADCParametersDMA, m_nType) == 0 && offsetof(ADCParametersDMA, m_nSizeOf) == 4, "");
static_assert(offsetof(ADCParametersDMA, m_nStartOf) == 8 && offsetof(ADCParametersDMA, m_nIntOf) == 12, "");
static_assert(offsetof(ADCParametersDMA, m_nDMABlockSize) == 16 && offsetof(ADCParametersDMA, m_nDMAMode) == 20, "");
static_assert(offsetof(ADCParametersDMA, m_fFreqStart) == 24 && offsetof(ADCParametersDMA, m_nTimerStart) == 28, "");
static_assert(offsetof(ADCParametersDMA, m_fFreqPack) == 32 && offsetof(ADCParametersDMA, m_nTimerPack) == 36, "");
static_assert(offsetof(ADCParametersDMA, m_nFirstChannel) == 40, "");
static_assert(offsetof(ADCParametersDMA, m_nChannelNumber) == 44 && offsetof(ADCParametersDMA, m_nGain) == 48, "");
static_assert(sizeof(ADCParametersDMAEX) == 24 + 2 * sizeof(void*), "40 bytes with 64-bit pointers, 32 with 32-bit");
static_assert(offsetof(ADCParametersDMAEX, m_nType) == 0 && offsetof(ADCParametersDMAEX, m_nSizeOf) == 4, "");
static_assert(offsetof(ADCParametersDMAEX, m_pnGains) == 8, "");
static_assert(offsetof(ADCParametersDMAEX, m_pnChannels) == 8 + sizeof(void*), "");
static_assert(offsetof(ADCParametersDMAEX, m_nSize) == 8 + 2 * sizeof(void*), "");
static_assert(offsetof(ADCParametersDMAEX, m_nControl) == 12 + 2 * sizeof(void*), "");
static_assert(offsetof(ADCParametersDMAEX, m_nSyncLevel) == 16 + 2 * sizeof(void*), "");
static_assert(sizeof(ADCRingInfo) == 9 && offsetof(ADCRingInfo, m_hDataEvent) == 5, "");
static_assert(offsetof(ADCRingInfo, m_nRingSize) == 0 && offsetof(ADCRingInfo, m_nReserved) == 4, "");
static_assert(sizeof(ADCBoardEntry) == 128 && offsetof(ADCBoardEntry, m_sName) == 4, "");
static_assert(sizeof(ADCBoardList) == 8 + sizeof(void*) && offsetof(ADCBoardList, m_nCount) == 4, "");
static_assert(offsetof(ADCBoardList, m_pEntries) == 8, "");
static_assert(sizeof(ADCSampleFormat) == 40 && offsetof(ADCSampleFormat, m_nFormatFlags) == 36, "");
static_assert(offsetof(ADCSampleFormat, m_nCodeBits) == 4 && offsetof(ADCSampleFormat, m_nCodeShift) == 8, "");
static_assert(offsetof(ADCSampleFormat, m_nCodeMask) == 12 && offsetof(ADCSampleFormat, m_nDigitalShift) == 16, "");
static_assert(offsetof(ADCSampleFormat, m_nDigitalMask) == 20 && offsetof(ADCSampleFormat, m_nDigitalLines) == 24, "");
static_assert(offsetof(ADCSampleFormat, m_nSignedCodes) == 28, "");
static_assert(offsetof(ADCSampleFormat, m_nBackwardOrder) == 32, "");
static_assert(sizeof(ADCCodeRange) == 8 && offsetof(ADCCodeRange, m_nMaximum) == 4, "");
static_assert(sizeof(ADCInputRange) == 12 && offsetof(ADCInputRange, m_nGain) == 4, "");
static_assert(offsetof(ADCInputRange, m_fRange) == 8, "");
static_assert(sizeof(ADCIntList) == 8 + sizeof(void*) && offsetof(ADCIntList, m_pnValues) == 8, "");
static_assert(sizeof(ADCFloatList) == 8 + sizeof(void*) && offsetof(ADCFloatList, m_pfValues) == 8, "");
static_assert(sizeof(ADCInputLimits) == 24 && offsetof(ADCInputLimits, m_fLower) == 8, "");
static_assert(sizeof(ADCChannelText) == 128 && offsetof(ADCChannelText, m_sText) == 4, "");
static_assert(sizeof(ADCStreamEnd) == 24 && offsetof(ADCStreamEnd, m_nPosition) == 8, "");
static_assert(offsetof(ADCStreamEnd, m_nLost) == 16, "");
static_assert(sizeof(ADCSetting) == 9016 && offsetof(ADCSetting, m_nType) == 32, "");
static_assert(offsetof(ADCSetting, m_fMinimum) == 40 && offsetof(ADCSetting, m_sCaption) == 56, "");
static_assert(offsetof(ADCSetting, m_sValue) == 312 && offsetof(ADCSetting, m_sChoices) == 824, "");
static_assert(offsetof(ADCSetting, m_sChoiceTexts) == 4920, "");
static_assert(sizeof(ADCSettingList) == 8 + sizeof(void*) && offsetof(ADCSettingList, m_pEntries) == 8, "");
static_assert(sizeof(ADCSettingValue) == 2 * sizeof(void*), "");
static_assert(sizeof(ADCFrequencyLimits) == 8 && offsetof(ADCFrequencyLimits, m_fMaximum) == 4, "");

#endif  // TARNO2_IADCDEVICE_H
