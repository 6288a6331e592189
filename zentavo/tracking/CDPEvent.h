#pragma once

#include <memory>
#include <string>
#include <vector>

#include "zentavo/core/Zentavo.h"
#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Value.h"

namespace zentavo {

/// One analytics event: built by the host, then handed to `Zentavo::track`. Account and visitor are filled in when it is
/// made, from the instance that it is made for; a later change of configuration does not reach it. (What is sent names
/// the visitor of the moment in which it is tracked.) A plain value: copy it freely, but do not change one object on two
/// threads.
struct ZENTAVO_EXPORT CDPEvent {
    /// An event of the shared instance.
    explicit CDPEvent(std::string en, std::vector<Map> items = {}, Map userProps = {}, Map customerProps = {},
                      Map objectProps = {}, Map evetProps = {}, std::string screenType = {},
                      std::string screenLabel = {}, std::string screenName = {});
    /// An event of an instance of its own.
    CDPEvent(Zentavo& instance, std::string en, std::vector<Map> items = {}, Map userProps = {}, Map customerProps = {},
             Map objectProps = {}, Map evetProps = {}, std::string screenType = {}, std::string screenLabel = {},
             std::string screenName = {});

    void setPropsId(std::string propId) { prop_id = std::move(propId); }
    const std::string& getPropsId() const noexcept { return prop_id; }
    void setEventName(std::string eventName) { en = std::move(eventName); }
    void setScreenName(std::string name) { screenName = std::move(name); }
    void setScreenType(std::string type) { screenType = std::move(type); }
    void setItems(std::vector<Map> newItems) { items = std::move(newItems); }
    void setEventProperties(Map eventProperties) { eventProps = std::move(eventProperties); }
    void setObjectProperties(Map objectProperties) { objectProps = std::move(objectProperties); }
    void setUserPropperties(Map userPropperties) { userProps = std::move(userPropperties); }
    /// Replaces the customer properties. A "customer_id" among them also becomes the stored customer of the SDK; one
    /// that is not text is a fault (`fatalError`).
    void setCustomerProperties(Map customerProperties);

    /// The body that goes to the services, as a map of ten entries; empty before the first activation.
    Map bodyMap() const;

    /// The record under its coding keys: "portal_id", "prop_id", "en", "uid", "dims", "extra", "items", "resp_type",
    /// "userproperties", "customerproperties".
    Map encode() const;

    std::string portal_id;
    std::string prop_id;
    std::string en;
    std::string uid;
    std::vector<Map> items;
    Map customerProps;
    Map userProps;
    Map eventProps;
    Map objectProps;
    std::string clickBC;
    std::string identifyType = "predict";
    std::string screenType;
    std::string screenLabel;
    std::string screenName;

private:
    std::shared_ptr<Zentavo> facade() const;

    /// The instance that the event was made for; the shared one where that is gone.
    std::weak_ptr<Zentavo> facade_;
};

} // namespace zentavo
