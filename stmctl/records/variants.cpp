// The kinds of records.
#include "stmctl/records/variants.hpp"

#include <algorithm>

namespace stmctl
{

namespace
{

constexpr Variant VARIANTS[] = {
    {"base", stm_read_records, stm_continuous_readout, RecordKind::base},
    {"omega", stm_read_records_omega, stm_continuous_readout_omega, RecordKind::omega},
    {"temp", stm_read_records_temp, stm_continuous_readout_temp, RecordKind::temp},
};

} // namespace

const Variant &variant_named(std::string_view name)
{
    return *std::ranges::find(VARIANTS, name, &Variant::name);
}

std::vector<std::string> variant_names()
{
    std::vector<std::string> names;
    for (const Variant &variant : VARIANTS) {
        names.emplace_back(variant.name);
    }
    return names;
}

} // namespace stmctl
