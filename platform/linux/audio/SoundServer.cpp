#include "platform/linux/audio/SoundServer.h"

#include <pulse/error.h>
#include <pulse/operation.h>
#include <pulse/proplist.h>

#include <future>
#include <utility>

namespace LinuxPlatform {
namespace {

constexpr std::chrono::milliseconds retryInterval{500};
/// PipeWire 0.3.65 now and then leaves a connection with an old default source, whatever it is asked; a new
/// one is told the truth.
constexpr std::chrono::milliseconds longestIgnorance{2000};

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

SoundServer::SoundServer() : context_(nullptr, &release), fresh_(nullptr, &release) {
    loop_.post([this] { connect(); });
}

SoundServer::~SoundServer() {
    // Last of all, after what others have posted.
    std::promise<void> isOver;
    loop_.post([this, &isOver] {
        deadline_ = {};
        retry_ = {};
        stopLooking();
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
    const bool isFirst = inputObservers_.isEmpty();
    auto subscription = inputObservers_.add(std::move(observer));
    connectIfGivenUp();
    if (isFirst && isReady_) {
        lookAgainLater();
    }
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
    stopLooking();
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
    stopLooking();
    retry_ = {};
    context_ = makeContext();
    deadline_ = loop_.after(patience, [this] { learn({}); });
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
    pa_context_connect(context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
}

void SoundServer::contextChanged() {
    switch (pa_context_get_state(context_.get())) {
    case PA_CONTEXT_READY:
        isReady_ = true;
        problem_.clear();
        forget(pa_context_subscribe(
            context_.get(),
            static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SOURCE | PA_SUBSCRIPTION_MASK_SERVER),
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
    // What a look learns now would connect beside the retry, and the later one would cut off the earlier.
    stopLooking();
    if (inputObservers_.isEmpty()) {
        isGivenUp_ = true;
    } else {
        // Not here: the library is still calling from the old connection.
        retry_ = loop_.after(retryInterval, [this] { connect(); });
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
    growing_ = {};
    forget(pa_context_get_server_info(
        context_.get(),
        [](pa_context*, const pa_server_info* info, void* data) {
            if (info != nullptr && info->default_source_name != nullptr) {
                server(data).growing_.defaultName = info->default_source_name;
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

void SoundServer::stopLooking() {
    nextLook_ = {};
    fresh_.reset();
}

void SoundServer::lookAfresh() {
    fresh_ = makeContext();
    if (!fresh_) {
        return;
    }
    pa_context_set_state_callback(
        fresh_.get(),
        [](pa_context* context, void* data) {
            const auto state = pa_context_get_state(context);
            if (!PA_CONTEXT_IS_GOOD(state)) {
                server(data).lookAgainLater();
            } else if (state == PA_CONTEXT_READY) {
                forget(pa_context_get_server_info(
                    context,
                    [](pa_context*, const pa_server_info* info, void* sameData) {
                        const bool isNamed = info != nullptr && info->default_source_name != nullptr;
                        server(sameData).lookedAfresh(isNamed ? info->default_source_name : "");
                    },
                    data));
            }
        },
        this);
    pa_context_connect(fresh_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
}

void SoundServer::lookAgainLater() {
    if (!inputObservers_.isEmpty()) {
        nextLook_ = loop_.after(longestIgnorance, [this] { lookAfresh(); });
    }
}

void SoundServer::lookedAfresh(const std::string& defaultName) {
    // Not here: the library is still calling from the connection that has answered.
    nextLook_ = loop_.after(std::chrono::milliseconds(0), [this, defaultName] {
        fresh_.reset();
        if (defaultName == known_.defaultName) {
            lookAgainLater();
        } else {
            // Streams end with their connection, so their owners have to hear of it in any case.
            wasInputRemoved_ = true;
            connect();
        }
    });
}

void SoundServer::sourceListed(const pa_source_info& source) {
    if (source.monitor_of_sink != PA_INVALID_INDEX || source.name == nullptr) {
        return;
    }
    growing_.hasMicrophone = true;
    if (source.name == growing_.defaultName) {
        growing_.defaultInput =
            InputDevice{source.index, source.name, source.sample_spec, source.channel_map};
    }
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
    lookAgainLater();
    if (isComplete) {
        learn(growing_);
    }
}

void SoundServer::learn(const Knowledge& knowledge) {
    deadline_ = {};
    const bool isNews = isKnown_ && (wasInputRemoved_ || knowledge.defaultInput != known_.defaultInput);
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
