#include "SampleStatus.h"

namespace lxm {

const char* StatusWord(SampleStatus status) {
    switch (status) {
        case SampleStatus::Failed: return "failed";
        case SampleStatus::Saturated: return "saturated";
        case SampleStatus::Early: return "early";
        case SampleStatus::Ok: break;
    }
    return "ok";
}

}  // namespace lxm
