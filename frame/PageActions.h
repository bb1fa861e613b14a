#pragma once
// Action methods that pages of every group share, for their descriptions' action tables.

#include "frame/PageDescription.h"
#include "platform/UIViewController.h"

#include <string>

namespace PageActions {

/// saveTextCell: ends editing on the page's view (endEditing: YES), which commits the text row
/// being edited and dismisses the keyboard.
PageAction saveTextCell();
/// Posts a Darwin notification (no object, no user info, delivered immediately).
PageAction postNotification(std::string name);
/// Presents an alert titled "Nimbra" with message and buttons that do nothing but close it.
PageAction showAlert(std::string message, std::vector<std::pair<std::string, UIAlertActionStyle>> buttons);

}  // namespace PageActions
