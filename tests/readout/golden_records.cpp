// The golden records by their kind.
#include "tests/readout/golden_records.hpp"

const std::vector<GoldenRecord> &golden_records(RecordKind kind)
{
    switch (kind) {
    case RecordKind::base:
        return GOLDEN_BASE;
    case RecordKind::omega:
        return GOLDEN_OMEGA;
    case RecordKind::temp:
        break;
    }
    return GOLDEN_TEMP;
}

const char *golden_header(RecordKind kind)
{
    switch (kind) {
    case RecordKind::base:
        return GOLDEN_BASE_HEADER;
    case RecordKind::omega:
        return GOLDEN_OMEGA_HEADER;
    case RecordKind::temp:
        break;
    }
    return GOLDEN_TEMP_HEADER;
}
