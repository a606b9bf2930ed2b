// What a board's folder keeps of it.
#include "simulator/store/kept_state.hpp"

#include <utility>

namespace simulator
{

std::string KeptState::open(const std::string &path)
{
    path_ = path;
    return directory_.open(path);
}

std::string KeptState::begin_counts()
{
    return counts_.open(path_);
}

std::string KeptState::load(Coprocessor &coprocessor, SpiDevice &device)
{
    std::string error = is_loaded_ ? save(coprocessor, device) : std::string();
    is_loaded_ = true;
    if (error.empty()) {
        error = directory_.load(identity_);
    }
    if (error.empty()) {
        coprocessor.set_identity(identity_);
        error = load_values(coprocessor);
    }
    if (error.empty()) {
        error = directory_.load_spi_mode(spi_mode_);
        device.set_mode(spi_mode_);
    }
    return error;
}

std::string KeptState::load_values(Coprocessor &coprocessor)
{
    CommandValues answers;
    std::string error = directory_.load(ValuesOf::settings, settings_);
    if (error.empty()) {
        error = directory_.load(ValuesOf::answers, answers);
    }
    if (error.empty()) {
        coprocessor.load(settings_, std::move(answers));
    }
    return error;
}

std::string KeptState::save(const Coprocessor &coprocessor, const SpiDevice &device)
{
    std::string error = save_settings(coprocessor);
    if (error.empty()) {
        error = save_mode(coprocessor.mode());
    }
    if (error.empty()) {
        error = save_spi_mode(device.mode());
    }
    return error.empty() ? counts_.write(coprocessor.tally()) : error;
}

std::string KeptState::save_settings(const Coprocessor &coprocessor)
{
    if (coprocessor.received_settings() == received_settings_) {
        return {};
    }
    received_settings_ = coprocessor.received_settings();
    const CommandValues settings = coprocessor.settings();
    if (settings == settings_) {
        return {};
    }
    settings_ = settings;
    return directory_.save(ValuesOf::settings, settings);
}

std::string KeptState::save_mode(Mode mode)
{
    if (mode == identity_.mode) {
        return {};
    }
    identity_.mode = mode;
    return directory_.save_mode(mode);
}

std::string KeptState::save_spi_mode(uint32_t mode)
{
    if (mode == spi_mode_) {
        return {};
    }
    spi_mode_ = mode;
    return directory_.save_spi_mode(mode);
}

std::string KeptState::renew_stand_in(int generation)
{
    if (generation == stand_in_generation_) {
        return {};
    }
    stand_in_generation_ = generation;
    return directory_.renew_stand_in();
}

} // namespace simulator
