// The requests for records, in a file of their own so that not every read-out contains the tables
// of fields.
#include "readout/record_format.hpp"

namespace stm
{

constexpr RecordRequest STM_REQUEST = {STM_RECORD, 0xC8, 73, 'I'};
constexpr RecordRequest STM_REQUEST_OMEGA = {STM_RECORD_OMEGA, 0xC1, 78, 'N'};
constexpr RecordRequest STM_REQUEST_TEMP = {STM_RECORD_TEMP, 0x02, 85, 'U'};
constexpr RecordRequest STM_REQUEST_TEMP_LIVE = {STM_RECORD_TEMP_LIVE, 0x02, 85, 'U'};

static_assert(record_request_fits(STM_REQUEST) && record_request_fits(STM_REQUEST_OMEGA) &&
              record_request_fits(STM_REQUEST_TEMP) && record_request_fits(STM_REQUEST_TEMP_LIVE));

} // namespace stm
