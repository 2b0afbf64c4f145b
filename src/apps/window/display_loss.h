#pragma once

#include <QTimer>
#include <functional>

namespace tarno2 {

/// What takes the place of the end that the toolkit brings about when it finds its display gone, as long as it lives.
/// Of two that live the later one counts. The toolkit's thread.
class OnDisplayLoss {
public:
    /// `goOn` is called on this thread, in the midst of the toolkit's work, which it never goes back to.
    explicit OnDisplayLoss(std::function<void()> goOn);
    ~OnDisplayLoss();
    OnDisplayLoss(const OnDisplayLoss&) = delete;
    OnDisplayLoss& operator=(const OnDisplayLoss&) = delete;
};

/// Looks twice a second whether the display is still there: the toolkit itself may not notice before it has something
/// to draw. Once it is gone, the `OnDisplayLoss` that lives goes on. The toolkit's thread, while it has a program.
class DisplayWatch {
public:
    DisplayWatch();

private:
    QTimer timer_;
};

}  // namespace tarno2
