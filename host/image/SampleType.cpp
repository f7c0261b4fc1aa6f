#include "host/image/SampleType.h"

size_t bytesOf(SampleType type) {
    switch (type) {
    case SampleType::Unsigned8:
    case SampleType::Signed8:
        return 1;
    case SampleType::Unsigned16:
    case SampleType::Signed16:
        return 2;
    case SampleType::Unsigned32:
    case SampleType::Signed32:
    case SampleType::Float32:
        return 4;
    case SampleType::Float64:
        return 8;
    }
    return 0;
}

std::string toText(SampleType type) {
    std::string bits = std::to_string(8 * bytesOf(type)) + "-bit ";
    switch (type) {
    case SampleType::Unsigned8:
    case SampleType::Unsigned16:
    case SampleType::Unsigned32:
        return bits + "unsigned";
    case SampleType::Signed8:
    case SampleType::Signed16:
    case SampleType::Signed32:
        return bits + "signed";
    case SampleType::Float32:
    case SampleType::Float64:
        return bits + "float";
    }
    return bits;
}
