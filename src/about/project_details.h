#pragma once
// Who makes Marrowvane and where to reach the project: the one place the
// About window (and anything else that names the maker) takes them from.
#include <array>

namespace mv::project {

inline constexpr const char* kWebPage = "https://marrowvane.example.org/";
inline constexpr const char* kMailAddress = "marrowvane@example.org";
inline constexpr const char* kMailSubject = "Marrowvane - comentarios";

struct Donation {
    const char* item;     // as the donation list shows it
    const char* address;  // the payment page it opens
};
inline constexpr std::array<Donation, 5> kDonations = {{
    {"Donaci\xC3\xB3n: $10.00", "https://marrowvane.example.org/donar?importe=10.00"},
    {"Donaci\xC3\xB3n: $20.00", "https://marrowvane.example.org/donar?importe=20.00"},
    {"Donaci\xC3\xB3n: $30.00", "https://marrowvane.example.org/donar?importe=30.00"},
    {"Donaci\xC3\xB3n: $40.00", "https://marrowvane.example.org/donar?importe=40.00"},
    {"Donaci\xC3\xB3n: $50.00", "https://marrowvane.example.org/donar?importe=50.00"},
}};

inline constexpr std::array<const char*, 4> kMakerLines = {
    "Automatizaci\xC3\xB3n para nodos EchoLink: reloj parlante, indicativos, balizas y control DTMF",
    "Hecho por el proyecto Marrowvane y sus colaboradores",
    "marrowvane.example.org  -  marrowvane@example.org",
    "Software libre, sin garant\xC3\xAD" "a de ning\xC3\xBAn tipo",
};

}  // namespace mv::project
