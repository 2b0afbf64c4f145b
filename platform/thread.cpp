#include "platform/thread.h"

namespace tarno2 {

const char* describe(PriorityResult result) {
    switch (result) {
        case PriorityResult::Realtime:
            return "real-time priority";
        case PriorityResult::Raised:
            return "raised priority";
        case PriorityResult::Unchanged:
            break;
    }
    return "normal priority";
}

}  // namespace tarno2
