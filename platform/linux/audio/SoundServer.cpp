#include "platform/linux/audio/SoundServer.h"

#include <pulse/error.h>
#include <pulse/operation.h>
#include <pulse/proplist.h>

#include <cstdlib>
#include <future>
#include <string_view>
#include <utility>

#include <unistd.h>

namespace LinuxPlatform {
namespace {

SoundServer& server(void* data) {
    return *static_cast<SoundServer*>(data);
}

void forget(pa_operation* operation) {
    if (operation != nullptr) {
        pa_operation_unref(operation);
    }
}

void release(pa_context* context) {
    pa_context_set_state_callback(context, nullptr, nullptr);
    pa_context_set_subscribe_callback(context, nullptr, nullptr);
    pa_context_disconnect(context);
    pa_context_unref(context);
}

} // namespace

SoundServer::SoundServer(std::chrono::milliseconds patience)
    : patience_(patience),
      context_(nullptr, &release) {
    loop_.post([this] { connect(); });
}

SoundServer::~SoundServer() {
    // Last of all, after what others have posted.
    std::promise<void> isOver;
    loop_.post([this, &isOver] {
        deadline_ = {};
        retry_ = {};
        waiting_.clear();
        context_.reset();
        isOver.set_value();
    });
    isOver.get_future().wait();
}

pa_context* SoundServer::context() const {
    return isReady_ ? context_.get() : nullptr;
}

std::string SoundServer::problem() const {
    return problem_.empty() ? "the sound server does not answer" : problem_;
}

void SoundServer::whenKnown(PulseLoop::Task task) {
    connectIfGivenUp();
    if (isKnown_) {
        task();
    } else {
        waiting_.push_back(std::move(task));
    }
}

Platform::Subscription SoundServer::addInputObserver(std::function<void()> observer) {
    auto subscription = inputObservers_.add(std::move(observer));
    connectIfGivenUp();
    return subscription;
}

void SoundServer::setSuspended(bool isSuspended) {
    if (isSuspended == isSuspended_) {
        return;
    }
    isSuspended_ = isSuspended;
    if (!isSuspended) {
        connect();
        return;
    }
    isReady_ = false;
    problem_ = "the computer is asleep";
    isGivenUp_ = false;
    retry_ = {};
    // Those who record stop first.
    learn({});
    context_.reset();
}

SoundServer::Context SoundServer::makeContext() {
    const std::unique_ptr<pa_proplist, decltype(&pa_proplist_free)> properties(pa_proplist_new(),
                                                                               &pa_proplist_free);
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_NAME, "Curtain");
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ID, "com.curtain.Curtain");
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ICON_NAME, "com.curtain.Curtain");
    return {pa_context_new_with_proplist(loop_.api(), nullptr, properties.get()), &release};
}

void SoundServer::connect() {
    isReady_ = false;
    isRefreshing_ = false;
    isOutdated_ = false;
    isGivenUp_ = false;
    followed_.reset();
    retry_ = {};
    context_ = makeContext();
    deadline_ = loop_.after(patience_, [this] { learn({}); });
    if (!context_) {
        lost();
        return;
    }
    pa_context_set_state_callback(
        context_.get(), [](pa_context*, void* data) { server(data).contextChanged(); }, this);
    pa_context_set_subscribe_callback(
        context_.get(),
        [](pa_context*, pa_subscription_event_type_t type, std::uint32_t index, void* data) {
            server(data).eventHappened(type, index);
        },
        this);
    // A failure is told through the state as well.
    // Where the user lets programs start the server, the first one does; the administrator's would be in the
    // way of his users.
    const bool mayLaunch = !std::exchange(hasLaunched_, true) && geteuid() != 0;
    pa_context_connect(context_.get(), nullptr, mayLaunch ? PA_CONTEXT_NOFLAGS : PA_CONTEXT_NOAUTOSPAWN,
                       nullptr);
}

void SoundServer::contextChanged() {
    switch (pa_context_get_state(context_.get())) {
    case PA_CONTEXT_READY:
        isReady_ = true;
        retryPause_.reset();
        problem_.clear();
        forget(pa_context_subscribe(context_.get(),
                                    static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SOURCE |
                                                                        PA_SUBSCRIPTION_MASK_SERVER |
                                                                        PA_SUBSCRIPTION_MASK_CARD),
                                    nullptr, nullptr));
        refresh();
        return;
    case PA_CONTEXT_FAILED:
    case PA_CONTEXT_TERMINATED:
        problem_ = pa_strerror(pa_context_errno(context_.get()));
        lost();
        return;
    default:
        return;
    }
}

void SoundServer::lost() {
    isReady_ = false;
    if (inputObservers_.isEmpty()) {
        isGivenUp_ = true;
    } else {
        // Not here: the library is still calling from the old connection.
        retry_ = loop_.after(retryPause_.next(), [this] { connect(); });
    }
    learn({});
}

void SoundServer::connectIfGivenUp() {
    if (isGivenUp_) {
        isKnown_ = false;
        connect();
    }
}

void SoundServer::eventHappened(pa_subscription_event_type_t type, std::uint32_t index) {
    const bool isRemoval = (type & PA_SUBSCRIPTION_EVENT_TYPE_MASK) == PA_SUBSCRIPTION_EVENT_REMOVE;
    const bool isSource = (type & PA_SUBSCRIPTION_EVENT_FACILITY_MASK) == PA_SUBSCRIPTION_EVENT_SOURCE;
    // The next device may get the same index.
    if (isRemoval && isSource && known_.defaultInput && known_.defaultInput->index == index) {
        wasInputRemoved_ = true;
    }
    refresh();
}

void SoundServer::refresh() {
    if (isRefreshing_) {
        isOutdated_ = true;
        return;
    }
    isRefreshing_ = true;
    isOutdated_ = false;
    answers_ = {};
    forget(pa_context_get_server_info(
        context_.get(),
        [](pa_context*, const pa_server_info* info, void* data) {
            if (info != nullptr) {
                server(data).serverDescribed(*info);
            }
        },
        this));
    forget(pa_context_get_card_info_list(
        context_.get(),
        [](pa_context*, const pa_card_info* card, int isLast, void* data) {
            if (isLast == 0 && card->active_profile2 != nullptr) {
                server(data).answers_.activeProfiles[card->index] = card->active_profile2->name;
            }
        },
        this));
    forget(pa_context_get_source_info_list(
        context_.get(),
        [](pa_context*, const pa_source_info* source, int isLast, void* data) {
            if (isLast == 0) {
                server(data).sourceListed(*source);
            } else {
                server(data).refreshed(isLast > 0);
            }
        },
        this));
}

void SoundServer::serverDescribed(const pa_server_info& info) {
    const auto text = [](const char* value) { return std::string_view(value != nullptr ? value : ""); };
    answers_.defaultName = text(info.default_source_name);
    isPipeWire_ = text(info.server_name).find("PipeWire") != std::string_view::npos;
}

void SoundServer::follow(const std::string& name) {
    followed_ = {name, known_.defaultName};
    if (!known_.defaultInput || known_.defaultInput->name != name) {
        refresh();
    }
}

void SoundServer::sourceListed(const pa_source_info& source) {
    const auto property = [&](const char* key) {
        const auto* const value = pa_proplist_gets(source.proplist, key);
        return std::string(value != nullptr ? value : "");
    };
    if (source.name == nullptr) {
        return;
    }
    answers_.sources.push_back({.device = {source.index, source.name, source.sample_spec, source.channel_map,
                                           source.description != nullptr ? source.description : ""},
                                .isMonitor = source.monitor_of_sink != PA_INVALID_INDEX,
                                .isHeadsetLoopback = property("bluez5.loopback") == "true",
                                .card = source.card,
                                .priority = std::atoi(property("priority.session").c_str())});
}

void SoundServer::refreshed(bool isComplete) {
    if (!isReady_) {
        // The connection broke, and with it every question.
        return;
    }
    isRefreshing_ = false;
    if (isOutdated_) {
        // What comes next is newer than this answer.
        refresh();
        return;
    }
    if (isComplete) {
        if (followed_ && followed_->serversName != answers_.defaultName) {
            followed_.reset();
        }
        answers_.followedName = followed_ ? followed_->name : "";
        const auto microphone = answers_.microphone();
        learn({answers_.defaultName, microphone ? std::optional(microphone->device) : std::nullopt,
               answers_.hasMicrophone(), microphone && microphone->isSubstitute});
    }
}

void SoundServer::learn(const Knowledge& knowledge) {
    deadline_ = {};
    const bool isNews = isKnown_ && (wasInputRemoved_ || knowledge.defaultInput != known_.defaultInput ||
                                     knowledge.isSubstitute != known_.isSubstitute);
    wasInputRemoved_ = false;
    known_ = knowledge;
    isKnown_ = true;
    for (const auto& task : std::exchange(waiting_, {})) {
        task();
    }
    if (isNews) {
        inputObservers_.tell();
    }
}

} // namespace LinuxPlatform
