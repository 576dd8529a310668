#pragma once

#include <QWidget>
#include <functional>

namespace velmora {

// Calls `act` once with the modal window that stands as soon as there is one. To be called before what brings that
// window up and waits for its end: `act` has to end it. A failure of the test when none comes within `timeout` ms.
void WhenModal(const std::function<void(QWidget*)>& act, int timeout = 5000);

}  // namespace velmora
