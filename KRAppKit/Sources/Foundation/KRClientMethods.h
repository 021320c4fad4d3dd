#pragma once

#include <bitset>
#include <cstddef>
#include <type_traits>

// Which optional methods of a client protocol an object implements. A protocol is an abstract class whose
// optional methods have empty bodies; a client implements one simply by overriding it. Because &Client::m
// names the most derived declaration, its type differs from &Protocol::m exactly when Client (or a base of
// it below the protocol) overrides m. The overrides must be accessible (public) to be seen.
using KRClientMethods = std::bitset<64>;

#define KR_CLIENT_OVERRIDES(Client, Protocol, method)                                                        \
    (!std::is_same_v<decltype(&Client::method), decltype(&Protocol::method)>)
