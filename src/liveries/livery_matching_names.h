// Titles of a livery that an airline flies for another carry both names in
// many packages: the word of each airline's name that such a title holds.
#pragma once

#include <array>
#include <string_view>

namespace tfx {

struct AirlineNameWord {
    std::string_view code;
    std::string_view word;
};

inline constexpr std::array<AirlineNameWord, 72> AIRLINE_NAME_WORDS = {{
    {"AAL", "American"},
    {"AAR", "Asiana"},
    {"AAY", "Allegiant"},
    {"ACA", "Air Canada"},
    {"AFR", "Air France"},
    {"AIC", "Air India"},
    {"ANA", "ANA"},
    {"ANZ", "Air New Zealand"},
    {"ASA", "Alaska"},
    {"ASH", "Mesa"},
    {"AUA", "Austrian"},
    {"AVA", "Avianca"},
    {"BAW", "British Airways"},
    {"BEL", "Brussels"},
    {"BOX", "AeroLogic"},
    {"CAI", "Corendon"},
    {"CCA", "Air China"},
    {"CES", "China Eastern"},
    {"CFE", "BA CityFlyer"},
    {"CHH", "Hainan"},
    {"CPA", "Cathay"},
    {"CSN", "China Southern"},
    {"DAE", "DHL Aero"},
    {"DAL", "Delta"},
    {"DHK", "DHL Air"},
    {"DLH", "Lufthansa"},
    {"EDV", "Endeavor"},
    {"EIN", "Aer Lingus"},
    {"ETH", "Ethiopian"},
    {"ETD", "Etihad"},
    {"EVA", "EVA Air"},
    {"EZY", "easyJet"},
    {"FDX", "FedEx"},
    {"FFT", "Frontier"},
    {"FIN", "Finnair"},
    {"FJO", "Flexjet"},
    {"GJS", "GoJet"},
    {"IBE", "Iberia"},
    {"JAL", "Japan Airlines"},
    {"JBU", "JetBlue"},
    {"JIA", "PSA Airlines"},
    {"JZA", "Jazz"},
    {"KAL", "Korean Air"},
    {"KLC", "Cityhopper"},
    {"KLM", "KLM"},
    {"LAN", "LATAM"},
    {"LOT", "LOT"},
    {"LRC", "Avianca"},
    {"NKS", "Spirit"},
    {"PDT", "Piedmont"},
    {"PRM", "Prime Air"},
    {"QFA", "Qantas"},
    {"QLK", "QantasLink"},
    {"QTR", "Qatar"},
    {"QXE", "Horizon"},
    {"RPA", "Republic"},
    {"RYR", "Ryanair"},
    {"SAS", "Scandinavian"},
    {"SIA", "Singapore"},
    {"SKW", "SkyWest"},
    {"SWA", "Southwest"},
    {"SWR", "Swiss"},
    {"TAP", "TAP"},
    {"THY", "Turkish"},
    {"TVF", "Transavia"},
    {"UAL", "United"},
    {"UAE", "Emirates"},
    {"UPS", "UPS"},
    {"VIR", "Virgin Atlantic"},
    {"VJT", "VistaJet"},
    {"VLG", "Vueling"},
    {"WJA", "WestJet"},
}};

}  // namespace tfx
