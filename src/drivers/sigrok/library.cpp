#include "drivers/sigrok/library.h"

#include <algorithm>
#include <glib.h>
#include <libsigrok/libsigrok.h>

#include "drivers/sigrok/variants.h"

namespace tarno2::drivers {

namespace {

std::mutex instanceMutex;
std::weak_ptr<Library> instanceInUse;

struct OptionsDeleter {
    void operator()(GSList* options) const {
        g_slist_free_full(options, [](gpointer each) {
            auto* const config = static_cast<sr_config*>(each);
            g_variant_unref(config->data);
            g_free(config);
        });
    }
};
using Options = std::unique_ptr<GSList, OptionsDeleter>;

bool addOption(Options& options, const KeyValue& option) {
    const sr_key_info* const key = sr_key_info_name_get(SR_KEY_CONFIG, option.key.c_str());
    GVariant* const value = key != nullptr ? variantOf(key->datatype, option.value) : nullptr;
    if (value == nullptr) {
        return false;
    }
    auto* const config = static_cast<sr_config*>(g_malloc0(sizeof(sr_config)));
    config->key = key->key;
    config->data = g_variant_ref_sink(value);
    options.reset(g_slist_append(options.release(), config));
    return true;
}

}  // namespace

std::shared_ptr<Library> Library::instance(std::string& problem) {
    const std::lock_guard lock(instanceMutex);
    std::shared_ptr<Library> library = instanceInUse.lock();
    if (library == nullptr) {
        library.reset(new Library);
        static_cast<void>(sr_log_loglevel_set(SR_LOG_ERR));
        const int result = sr_init(&library->context_);
        if (result != SR_OK) {
            problem = std::string("The sigrok library does not start: ") + sr_strerror(result) + ".";
            return nullptr;
        }
        instanceInUse = library;
    }
    return library;
}

Library::~Library() {
    if (context_ != nullptr) {
        sr_exit(context_);
    }
}

sr_dev_driver* Library::find(const std::string& driver) const {
    for (sr_dev_driver** each = sr_driver_list(context_); each != nullptr && *each != nullptr; ++each) {
        if (driver == (*each)->name) {
            return *each;
        }
    }
    return nullptr;
}

std::vector<sr_dev_inst*> Library::scan(const DeviceSpec& spec, std::string& problem) {
    sr_dev_driver* const driver = find(spec.driver);
    if (driver == nullptr) {
        problem = "sigrok has no driver \"" + spec.driver + "\".";
        return {};
    }
    if (inUse(spec.driver)) {
        problem = "A device of the driver \"" + spec.driver + "\" is in use.";
        return {};
    }
    const bool first = std::find(initialised_.begin(), initialised_.end(), spec.driver) == initialised_.end();
    if (first && sr_driver_init(context_, driver) != SR_OK) {
        problem = "The sigrok driver \"" + spec.driver + "\" does not start.";
        return {};
    }
    if (first) {
        initialised_.push_back(spec.driver);
    }
    sr_dev_clear(driver);
    Options options;
    for (const KeyValue& option : spec.options) {
        if (!addOption(options, option)) {
            problem = "\"" + option.key + "=" + option.value + "\" is no option of sigrok devices.";
            return {};
        }
    }
    std::vector<sr_dev_inst*> devices;
    GSList* const found = sr_driver_scan(driver, options.get());
    for (const GSList* each = found; each != nullptr; each = each->next) {
        devices.push_back(static_cast<sr_dev_inst*>(each->data));
    }
    g_slist_free(found);
    if (devices.empty()) {
        problem = "There is no device \"" + spec.text + "\".";
    }
    return devices;
}

void Library::use(const std::string& driver, int more) {
    if (more > 0) {
        used_.push_back(driver);
    } else if (const auto place = std::find(used_.begin(), used_.end(), driver); place != used_.end()) {
        used_.erase(place);
    }
}

bool Library::inUse(const std::string& driver) const {
    return std::find(used_.begin(), used_.end(), driver) != used_.end();
}

}  // namespace tarno2::drivers
