// Whether the message server itself runs on this machine: long work then leaves it time.
//
//   ::Sleep(modMain::runningOnServer ? kPauseOnServer : kPause);
//
// Set once at start-up. The user-interface thread.
#pragma once

namespace modMain {

inline bool runningOnServer = false;

}  // namespace modMain
