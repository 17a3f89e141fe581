#pragma once
// The host program's automation interface as this binding sees it: its
// published class and interface identifiers, where each command sits in the
// default interface's table of functions, and the events by name. The host's
// own member names are never used: a command is found by its position.
#include <windows.h>

#include <oaidl.h>

#include <array>
#include <string_view>

namespace mv::host_automation {

// {D1FB3C9A-BB2D-446A-A74A-E771F134ED56}: the host's automation class.
inline constexpr CLSID kHostClass = {0xD1FB3C9A, 0xBB2D, 0x446A, {0xA7, 0x4A, 0xE7, 0x71, 0xF1, 0x34, 0xED, 0x56}};
// {7733112C-4577-4432-9DB0-A9398184EAF6}: its default interface, dual.
inline constexpr IID kHostInterface = {0x7733112C, 0x4577, 0x4432, {0x9D, 0xB0, 0xA9, 0x39, 0x81, 0x84, 0xEA, 0xF6}};
// {ACD8531B-B0CE-4F14-9405-6AB8AC5C9EFA}: the station information StationInfo returns.
inline constexpr IID kStationInfoInterface = {0xACD8531B, 0xB0CE, 0x4F14, {0x94, 0x05, 0x6A, 0xB8, 0xAC, 0x5C, 0x9E, 0xFA}};

// A command's position counts the interface's own members from 1, after the
// seven every dual interface begins with (IUnknown's three, IDispatch's four).
enum class Command : int {
    Connect = 2,
    Disconnect = 3,
    DisconnectAll = 4,
    SetPTT = 6,
    IsBusy = 7,
    IsReceiving = 8,
    IsTransmitting = 9,
    IsCarrierDetected = 10,
    SendCW = 11,
    IsConnectedTo = 13,
    StationInfo = 25,
    TransmitDTMF = 28,
    SetRTS = 32,
    SetDTR = 33,
    SendChatText = 34,
    ExecuteDTMF = 37,
    PerformAction = 40,
};

inline constexpr int kInheritedMembers = 7;
// Index into the table of functions (the vtable) of a command's position.
constexpr int tableSlot(Command c) { return kInheritedMembers + static_cast<int>(c) - 1; }
// The station information's Callsign is its first own member.
inline constexpr int kCallsignSlot = kInheritedMembers;

// The host's Booleans: 16 bits, True = -1.
constexpr VARIANT_BOOL toHostBool(bool b) { return b ? VARIANT_TRUE : VARIANT_FALSE; }
// Any non-zero value reads as True, as the host's own language treats it.
constexpr bool fromHostBool(VARIANT_BOOL b) { return b != VARIANT_FALSE; }

enum class Event { DTMFString, RX, CarrierDetect, Connected, Disconnected, ChatTextReceived, Closing };

struct EventName {
    Event event;
    std::string_view name;
    int arguments;
};
// The names the host's event interface gives its members; the dispatch ids
// behind them are looked up at run time.
inline constexpr std::array<EventName, 7> kEventNames = {{
    {Event::DTMFString, "DTMFString", 1},
    {Event::RX, "RX", 1},
    {Event::CarrierDetect, "CarrierDetect", 1},
    {Event::Connected, "connected", 3},
    {Event::Disconnected, "Disconnected", 1},
    {Event::ChatTextReceived, "ChatTextReceived", 1},
    {Event::Closing, "Closing", 0},
}};

}  // namespace mv::host_automation
