// The part of fmt that is not a template, for cross builds: the target's archive is not installed,
// but the headers contain its sources.
#include <fmt/format-inl.h>

namespace fmt::detail
{

template auto dragonbox::to_decimal(float value) noexcept -> dragonbox::decimal_fp<float>;
template auto dragonbox::to_decimal(double value) noexcept -> dragonbox::decimal_fp<double>;
template auto thousands_sep_impl<char>(locale_ref locale) -> thousands_sep_result<char>;
template auto decimal_point_impl(locale_ref locale) -> char;

} // namespace fmt::detail
