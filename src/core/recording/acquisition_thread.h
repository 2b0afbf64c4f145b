#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "core/recording/board.h"
#include "core/recording/data_wait.h"
#include "core/recording/decimator.h"
#include "core/recording/line_edges.h"
#include "core/recording/recording_progress.h"
#include "core/recording/ring_reader.h"
#include "core/recording/session_link.h"
#include "core/recording/stop_code.h"
#include "records/clock_pairs.h"

namespace tarno2 {

/// The body of a session's acquisition thread: sets the board up, waits to be released, then moves every half of the
/// driver's ring, or of a slow board what it has counted, through the evaluator into the data file until something ends
/// the recording. On every way out the files are closed and described and one final notification is posted.
///
/// A session that is only monitored goes the same way as far as the live tap. Once it is told to keep what it reads,
/// the next block begins the recording: what is told of it counts from there.
///
/// Between pieces of a recording it neither allocates nor locks.
class AcquisitionThread {
public:
    /// Both outlive it.
    AcquisitionThread(T_BOARD& board, SessionLink& link);
    /// The whole life of the thread; does not throw.
    void run() noexcept;

private:
    /// Results of a pass through the data path.
    enum Pass : int32_t {
        kGoOn = 0,
        kFinished = 1,
        kWriteFailed = -1,
        kNoData = -2,
        kAnalyzeFailed = -3,
        kTransferFailed = -4
    };

    [[nodiscard]] static StopCode stopCodeOf(int32_t result);

    [[nodiscard]] StartFailure prepare();
    void waitAndMeasure();
    [[nodiscard]] bool startBoard();
    void takeUp();
    void beginHere();
    void measure();
    void finish();

    [[nodiscard]] bool checksForData() const;
    [[nodiscard]] WaitPlan waitPlan() const;
    void updatePositions();
    void askCount();
    void noteClock(bool last);
    void askEnd();
    void askMarks();
    void markEdges(std::span<const std::byte> block);
    void markAt(MarkSource source, uint64_t position, int64_t now, std::string_view text);
    void wakeMarks();
    [[nodiscard]] int64_t age(uint64_t position) const;
    [[nodiscard]] uint64_t keptFrame(uint64_t position) const;
    void readHalves();
    void readCounted();
    void readUpTo(uint64_t end);
    void watchForData();
    void drain(DataWait::Wake wake);
    void explain(DataWait::Wake wake);
    void tellEnd(bool stopAsked);
    void endAs(uint32_t cause, uint64_t position);
    [[nodiscard]] bool read(const RingReader::Part& part);
    [[nodiscard]] bool transfer(const RingReader::Part& part);
    [[nodiscard]] bool fetch(std::byte* destination, uint32_t count, uint32_t offset, int32_t partNumber);
    [[nodiscard]] int32_t processBlock(uint32_t samples);
    [[nodiscard]] int32_t evaluate(std::span<const std::byte> block);
    [[nodiscard]] int32_t write(const EvaluatedBlock& block);
    [[nodiscard]] bool overwritten();
    void overflow();
    void failAt(uint64_t position, const std::string& problem);
    void lose(LossCause cause);
    void fail(ErrorDetail detail);
    void fail(ErrorDetail detail, const std::string& problem);
    void closeFiles();
    void decideCode();
    void tellPassport();
    void completeReport(bool saved);
    bool notify();
    void notifyProgress();
    [[nodiscard]] bool fallsBehind();

    T_BOARD& board_;
    SessionLink& link_;
    T_DRIVER& driver_;
    uint32_t sampleWidth_;
    StreamTiming timing_;
    std::unique_ptr<std::byte[]> buffer_;
    std::byte* block_ = nullptr;  ///< the block that was read last: in the buffer, or in the writer's cache
    std::optional<Decimator> decimator_;
    std::optional<LineEdges> edges_;  ///< nothing: no line is watched
    std::optional<RingReader> ring_;
    DataWait wait_;
    bool draining_ = false;        ///< the recording has ended, the rest of the ring is being read
    bool counts_ = false;          ///< the driver has told how many samples it has put into the ring
    bool countAnswered_ = false;   ///< and did so when it was asked last
    bool tellsEnd_ = false;        ///< the driver tells whether its stream has ended
    bool tellsMarks_ = true;       ///< the driver has always told what it has marked
    bool startAwaited_ = false;    ///< the external start has not come
    bool eventCame_ = false;       ///< with this pass
    bool additionalMode_ = false;  ///< the pre-history portion is being read
    int32_t dataMode_ = 0;
    int32_t result_ = kGoOn;
    bool unplugged_ = false;
    bool begun_ = false;  ///< the first block was processed
    bool keeps_ = false;  ///< the evaluator, the writer and the marks are here to be used
    /// The sample that the recording counts from: 0, or where one that was monitored began to be kept.
    uint64_t origin_ = 0;
    std::optional<LocalTime> noDataSince_;
    uint64_t lastHalves_ = 0;
    uint64_t lastProgress_ = 0;
    std::optional<ADCStreamEnd> end_;  ///< the board's stream has ended by itself
    std::string endWords_;             ///< of the driver, why
    DiskWatch diskWatch_;
    ClockPairs clock_;
    int64_t begunAt_ = 0;  ///< microseconds since 1970
    RecordingResult report_;
};

}  // namespace tarno2
