#include "zentavo/core/StoreKeys.h"

namespace zentavo {

StoreKeys::StoreKeys(const std::optional<std::string>& mainBundleIdentifier)
    : prefix(mainBundleIdentifier ? *mainBundleIdentifier + "." : "default."), visitorId(prefix + "ZentavoVisitorId"),
      customerId(prefix + "ZentavoCustomerId"), customerProperties(prefix + "ZentavoCustomerProperties"),
      visitorType(prefix + "visitorType"), sessionId(prefix + "sessionId"), utm(prefix + "utm"), atm(prefix + "atm"),
      clkBc(prefix + "clkBc"), portalId(prefix + "ZenatvoPortalKey"), propsId(prefix + "ZenatvoPropsKey"),
      pushUid(prefix + "ZentavoUid"), deviceToken(prefix + "ZenatvoDeviceTokenFlag"),
      appInstall(prefix + "app_install"), operationTime(prefix + "operationTime"),
      applicationId(prefix + "applicationId"),
      badge(mainBundleIdentifier ? *mainBundleIdentifier + ".badge" : "ZentavoSDK.badge") {}

PushChoiceKeys::PushChoiceKeys(const std::string& pushId)
    : urlClicked(pushId + "_url_clicked"), imageClicked(pushId + "_image_clicked"), rating(pushId + "_rating") {}

} // namespace zentavo
