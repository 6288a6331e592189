#pragma once

namespace zentavo::desktop {

/// What the programs of one app offer each other on the message bus. Notifications and responses travel as the texts of
/// `codec`; one that cannot be read is refused as an invalid argument.
///
/// Each hears those of the others that have something to tell it, and nobody else; see `Callers`.

/// The app, at the name `BusNames::app`, for its notification service.
namespace app_interface {
inline constexpr const char* path = "/zentavo/App";
inline constexpr const char* name = "zentavo.App1";
inline constexpr const char* xml = R"(<node><interface name="zentavo.App1">
  <!-- How to show it while the app runs: a mask of presentation options, asked before it is shown. -->
  <method name="WillPresent"><arg type="s" name="notification" direction="in"/><arg type="u" name="options" direction="out"/></method>
  <!-- The user answered a notification. Answered at once; the app's delegate is told when it has one. One whose "id" has
       come before is answered, and not told again. -->
  <method name="Respond"><arg type="s" name="response" direction="in"/></method>
  <!-- Where pushes to this app are to be sent: an endpoint's URL, its keys in the fragment where it has some. -->
  <method name="TokenChanged"><arg type="s" name="token" direction="in"/></method>
  <method name="RegistrationFailed"><arg type="s" name="reason" direction="in"/></method>
</interface></node>)";
} // namespace app_interface

/// The notification-service extension, at the name `BusNames::notificationService`, for the app and the content extension.
namespace service_interface {
inline constexpr const char* path = "/zentavo/NotificationService";
inline constexpr const char* name = "zentavo.NotificationService1";
inline constexpr const char* xml = R"(<node><interface name="zentavo.NotificationService1">
  <!-- The app asks for remote notifications. The answer comes later, as TokenChanged or RegistrationFailed. -->
  <method name="Register"/>
  <!-- What it shows now, in the order of arrival. -->
  <method name="Delivered"><arg type="as" name="notifications" direction="out"/></method>
  <method name="RemoveDelivered"><arg type="as" name="identifiers" direction="in"/></method>
  <!-- From the content extension: as if the user had done it on the notification itself, which is closed. -->
  <method name="Respond"><arg type="s" name="response" direction="in"/></method>
</interface></node>)";
} // namespace service_interface

/// The notification-content extension, at the name `BusNames::notificationContent`, for the notification service.
namespace content_interface {
inline constexpr const char* path = "/zentavo/NotificationContent";
inline constexpr const char* name = "zentavo.NotificationContent1";
inline constexpr const char* xml = R"(<node><interface name="zentavo.NotificationContent1">
  <!-- The user wants to see all of it. -->
  <method name="Show"><arg type="s" name="notification" direction="in"/></method>
</interface></node>)";
} // namespace content_interface

} // namespace zentavo::desktop
