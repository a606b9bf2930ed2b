// What a board's folder keeps of it.
#include "simulator/store/kept_state.hpp"

#include <utility>

namespace simulator
{

std::string KeptState::open(const std::string &path)
{
    path_ = path;
    std::string error = directory_.open(path);
    uint8_t *bytes = nullptr;
    if (error.empty()) {
        error = directory_.map_shared(SharedState::fresh(), bytes);
    }
    if (error.empty()) {
        shared_.use(bytes, BoardDirectory::stand_in(path));
    }
    return error;
}

std::string KeptState::load(Coprocessor &coprocessor, SpiDevice &device)
{
    BoardIdentity identity;
    SavedState &saved = shared_.saved();
    std::string error = directory_.load(identity);
    if (error.empty()) {
        coprocessor.set_identity(identity);
        saved.mode = identity.mode;
        error = load_texts(coprocessor, &Coprocessor::load);
    }
    if (error.empty()) {
        saved.received_settings = coprocessor.received_settings();
        error = directory_.load_spi_mode(saved.spi_mode);
        device.keep_mode(saved.spi_mode);
    }
    return error;
}

std::string KeptState::begin()
{
    directory_.clear();
    return counts_.begin(path_);
}

std::string KeptState::go_on(Coprocessor &coprocessor) const
{
    return load_texts(coprocessor, &Coprocessor::go_on_with);
}

std::string KeptState::load_texts(Coprocessor &coprocessor, Take take) const
{
    CommandValues settings;
    CommandValues answers;
    std::string error = directory_.load(ValuesOf::settings, settings);
    if (error.empty()) {
        error = directory_.load(ValuesOf::answers, answers);
    }
    if (error.empty()) {
        (coprocessor.*take)(std::move(settings), std::move(answers));
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
    return error.empty() ? counts_.write(coprocessor.tally(), shared_.saved()) : error;
}

// What is in a file is noted afterwards: whoever is killed in between, or finds the disk full, leaves it to
// the next program.
std::string KeptState::save_settings(const Coprocessor &coprocessor)
{
    const uint32_t received = coprocessor.received_settings();
    if (received == shared_.saved().received_settings) {
        return {};
    }
    CommandValues kept;
    const CommandValues settings = coprocessor.settings();
    const bool is_kept = directory_.load(ValuesOf::settings, kept).empty() && kept == settings;
    std::string error = is_kept ? "" : directory_.save(ValuesOf::settings, settings);
    if (error.empty()) {
        shared_.saved().received_settings = received;
    }
    return error;
}

std::string KeptState::save_mode(Mode mode)
{
    if (mode == shared_.saved().mode) {
        return {};
    }
    std::string error = directory_.save_mode(mode);
    if (error.empty()) {
        shared_.saved().mode = mode;
    }
    return error;
}

std::string KeptState::save_spi_mode(uint32_t mode)
{
    if (mode == shared_.saved().spi_mode) {
        return {};
    }
    std::string error = directory_.save_spi_mode(mode);
    if (error.empty()) {
        shared_.saved().spi_mode = mode;
    }
    return error;
}

std::string KeptState::renew_stand_in(int generation)
{
    if (generation == shared_.saved().stand_in_generation) {
        return {};
    }
    shared_.saved().stand_in_generation = generation;
    return directory_.renew_stand_in();
}

} // namespace simulator
