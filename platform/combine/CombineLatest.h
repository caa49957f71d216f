#pragma once

#include "platform/combine/Publisher.h"

#include <memory>
#include <optional>
#include <utility>

namespace platform {

// Pairs the latest values of two sources: nothing until both have spoken, then a pair for every value of either. The
// first source is subscribed first. A value that arrives while a pair is being delivered emits its own pair at once,
// inside that delivery, so that a request made in an answer is not lost.
template<typename A, typename B>
Publisher<std::pair<A, B>> combineLatest(Publisher<A> const& first, Publisher<B> const& second)
{
    using Pair = std::pair<A, B>;
    return Publisher<Pair>([first, second](Receive<Pair> receive) {
        struct State {
            std::optional<A> a {};
            std::optional<B> b {};
            Receive<Pair> receive;

            void emit() const
            {
                if (a && b)
                    receive(Pair { *a, *b });
            }
        };
        auto state = std::make_shared<State>();
        state->receive = std::move(receive);
        auto fromFirst = std::make_shared<Cancellable>(first.subscribe([state](A const& value) {
            state->a = value;
            state->emit();
        }));
        auto fromSecond = std::make_shared<Cancellable>(second.subscribe([state](B const& value) {
            state->b = value;
            state->emit();
        }));
        return Cancellable([fromFirst, fromSecond] {
            fromFirst->cancel();
            fromSecond->cancel();
        });
    });
}

} // namespace platform
