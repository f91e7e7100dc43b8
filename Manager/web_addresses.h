#pragma once

namespace WebAddresses {
constexpr char help[] = "https://pomoc.velmor.example/";
constexpr char newCard[] = "https://www.velmor.example/nowy-dowod";
} // namespace WebAddresses
