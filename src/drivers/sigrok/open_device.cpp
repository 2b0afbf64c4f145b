// An open device of the library: what it is, and how it is set.

#include <algorithm>
#include <cmath>
#include <glib.h>
#include <libsigrok/libsigrok.h>

#include "drivers/sigrok/library.h"
#include "drivers/sigrok/variants.h"

namespace tarno2::drivers {

namespace {

struct VariantDeleter {
    void operator()(GVariant* value) const { g_variant_unref(value); }
};
using Variant = std::unique_ptr<GVariant, VariantDeleter>;

Variant configuration(const sr_dev_inst* device, const sr_channel_group* group, uint32_t key) {
    GVariant* value = nullptr;
    const int result = sr_config_get(sr_dev_inst_driver_get(device), device, group, key, &value);
    return Variant(result == SR_OK ? value : nullptr);
}

/// Whether the library gets or sets this, or both: of its bits the highest is the sign of what it returns.
bool can(const sr_dev_inst* device, const sr_channel_group* group, uint32_t key, uint32_t what) {
    return (static_cast<uint32_t>(sr_dev_config_capabilities_list(device, group, static_cast<int>(key))) & what) != 0;
}

std::vector<double> numbers(GVariant* array) {
    gsize count = 0;
    const auto* const values = static_cast<const uint64_t*>(g_variant_get_fixed_array(array, &count, sizeof(uint64_t)));
    return {values, values + count};
}

std::string wordOf(const char* text) {
    return text != nullptr ? text : "";
}

}  // namespace

bool OpenDevice::open(const std::shared_ptr<Library>& library, const DeviceSpec& spec, size_t place,
                      std::string& problem) {
    const std::vector<sr_dev_inst*> found = library->scan(spec, problem);
    if (place >= found.size()) {
        problem = problem.empty() ? "The device \"" + spec.text + "\" is not there any more." : problem;
        return false;
    }
    const int result = sr_dev_open(found[place]);
    if (result != SR_OK) {
        problem = "The device \"" + spec.text + "\" can't be opened: " + sr_strerror(result) + ".";
        return false;
    }
    library_ = library;
    spec_ = spec;
    device_ = found[place];
    library_->use(spec_.driver, 1);
    learn();
    return true;
}

void OpenDevice::close() {
    if (device_ == nullptr) {
        return;
    }
    sr_dev_close(device_);
    library_->use(spec_.driver, -1);
    device_ = nullptr;
    analog_.clear();
    logic_.clear();
}

void OpenDevice::learn() {
    for (const GSList* each = sr_dev_inst_channels_get(device_); each != nullptr; each = each->next) {
        auto* const channel = static_cast<sr_channel*>(each->data);
        (channel->type == SR_CHANNEL_LOGIC ? logic_ : analog_).push_back(channel);
    }
    continuous_ = sr_dev_has_option(device_, SR_CONF_CONTINUOUS) != 0;
    rate_ = can(device_, nullptr, SR_CONF_SAMPLERATE, SR_CONF_SET);
}

std::vector<std::string> OpenDevice::analogNames() const {
    std::vector<std::string> names;
    for (const sr_channel* const channel : analog_) {
        names.push_back(wordOf(channel->name));
    }
    return names;
}

std::string OpenDevice::name() const {
    std::string name = wordOf(sr_dev_inst_vendor_get(device_));
    for (const std::string& word : {wordOf(sr_dev_inst_model_get(device_)), wordOf(sr_dev_inst_version_get(device_))}) {
        name += word.empty() || name.empty() ? word : " " + word;
    }
    const std::string connection = wordOf(sr_dev_inst_connid_get(device_));
    return (name.empty() ? spec_.driver : name) + (connection.empty() ? "" : " (" + connection + ")");
}

OpenDevice::Rates OpenDevice::rates() const {
    Rates rates;
    GVariant* listed = nullptr;
    if (sr_config_list(sr_dev_inst_driver_get(device_), device_, nullptr, SR_CONF_SAMPLERATE, &listed) != SR_OK) {
        return rates;
    }
    const Variant list(listed);
    if (const Variant values(g_variant_lookup_value(listed, "samplerates", G_VARIANT_TYPE("at"))); values != nullptr) {
        rates.values = numbers(values.get());
        std::sort(rates.values.begin(), rates.values.end());
    } else if (const Variant steps(g_variant_lookup_value(listed, "samplerate-steps", G_VARIANT_TYPE("at")));
               steps != nullptr && g_variant_n_children(steps.get()) == 3) {
        const std::vector<double> limits = numbers(steps.get());
        rates = {.values = {std::max(1.0, limits[0]), limits[1]}, .stepped = true};
    }
    return rates;
}

double OpenDevice::negotiateRate(double wished, std::string& problem) const {
    const Rates known = rates();
    double nearest = wished;
    if (!known.values.empty()) {
        nearest = known.stepped ? std::clamp(wished, known.values.front(), known.values.back())
                                : *std::min_element(known.values.begin(), known.values.end(), [&](double a, double b) {
                                      return std::abs(a - wished) < std::abs(b - wished);
                                  });
    }
    const auto rate = static_cast<uint64_t>(std::max(1.0, std::round(nearest)));
    const int result = sr_config_set(device_, nullptr, SR_CONF_SAMPLERATE, g_variant_new_uint64(rate));
    // A device that refuses a rate goes on with the one it has.
    const Variant taken = configuration(device_, nullptr, SR_CONF_SAMPLERATE);
    const uint64_t told = taken != nullptr ? g_variant_get_uint64(taken.get()) : result == SR_OK ? rate : 0;
    if (told == 0) {
        problem = "The rate of " + name() + " can't be set: " + sr_strerror(result) + ".";
    }
    return static_cast<double>(told);
}

sr_channel_group* OpenDevice::groupOf(const sr_channel& channel) const {
    for (const GSList* each = sr_dev_inst_channel_groups_get(device_); each != nullptr; each = each->next) {
        auto* const group = static_cast<sr_channel_group*>(each->data);
        if (g_slist_find(group->channels, &channel) != nullptr && group->channels->next == nullptr) {
            return group;
        }
    }
    return nullptr;
}

double OpenDevice::range(const sr_channel& channel) const {
    const sr_channel_group* const group = groupOf(channel);
    const bool told = group != nullptr && can(device_, group, SR_CONF_VDIV, SR_CONF_GET);
    const Variant division = told ? configuration(device_, group, SR_CONF_VDIV) : nullptr;
    if (division == nullptr) {
        return 0.0;
    }
    uint64_t numerator = 0;
    uint64_t denominator = 1;
    g_variant_get(division.get(), "(tt)", &numerator, &denominator);
    const bool counted = can(device_, group, SR_CONF_NUM_VDIV, SR_CONF_GET);
    const Variant divisions = counted ? configuration(device_, group, SR_CONF_NUM_VDIV) : nullptr;
    const double usual = 8.0;
    const double count = divisions != nullptr ? static_cast<double>(g_variant_get_int32(divisions.get())) : usual;
    return static_cast<double>(numerator) / static_cast<double>(denominator) * count / 2.0;
}

bool OpenDevice::apply(const DeviceOption& option, std::string& problem) const {
    const std::string& key = option.option.key;
    const sr_channel_group* group = nullptr;
    for (const GSList* each = sr_dev_inst_channel_groups_get(device_); each != nullptr; each = each->next) {
        const auto* const named = static_cast<const sr_channel_group*>(each->data);
        group = option.group == named->name ? named : group;
    }
    const sr_key_info* const info = sr_key_info_name_get(SR_KEY_CONFIG, key.c_str());
    const std::string whole = (option.group.empty() ? "" : option.group + ":") + key + "=" + option.option.value;
    if (!option.group.empty() && group == nullptr) {
        problem = name() + " has no group of channels \"" + option.group + "\".";
        return false;
    }
    const bool settable = info != nullptr && can(device_, group, info->key, SR_CONF_SET);
    GVariant* const value = settable ? variantOf(info->datatype, option.option.value) : nullptr;
    const int result = value != nullptr ? sr_config_set(device_, group, info->key, value) : SR_ERR_ARG;
    if (result != SR_OK) {
        problem = name() + " does not take the option \"" + whole + "\".";
    }
    return result == SR_OK;
}

void OpenDevice::prepare(const std::vector<int32_t>& channels) const {
    for (size_t i = 0; i < analog_.size(); ++i) {
        const bool wanted = std::find(channels.begin(), channels.end(), static_cast<int32_t>(i)) != channels.end();
        static_cast<void>(sr_dev_channel_enable(analog_[i], wanted ? 1 : 0));
    }
    static_cast<void>(sr_config_commit(device_));
}

}  // namespace tarno2::drivers
