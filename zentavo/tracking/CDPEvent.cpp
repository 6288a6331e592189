#include "zentavo/tracking/CDPEvent.h"

#include "zentavo/core/ZentavoState.h"
#include "zentavo/tracking/EventBody.h"

namespace zentavo {

CDPEvent::CDPEvent(std::string name, std::vector<Map> eventItems, Map user, Map customer, Map object, Map event,
                   std::string type, std::string label, std::string screen)
    : CDPEvent(*Zentavo::shared(), std::move(name), std::move(eventItems), std::move(user), std::move(customer),
               std::move(object), std::move(event), std::move(type), std::move(label), std::move(screen)) {}

CDPEvent::CDPEvent(Zentavo& instance, std::string name, std::vector<Map> eventItems, Map user, Map customer, Map object,
                   Map event, std::string type, std::string label, std::string screen)
    : portal_id(instance.getPortalId().value_or("")), prop_id(instance.getPropsId()), en(std::move(name)),
      uid(instance.getUid()), items(std::move(eventItems)), customerProps(std::move(customer)),
      userProps(std::move(user)), eventProps(std::move(event)), objectProps(std::move(object)),
      screenType(std::move(type)), screenLabel(std::move(label)), screenName(std::move(screen)),
      facade_(instance.weak_from_this()) {}

std::shared_ptr<Zentavo> CDPEvent::facade() const {
    auto instance = facade_.lock();
    return instance ? instance : Zentavo::shared();
}

void CDPEvent::setCustomerProperties(Map customerProperties) {
    entryPoint("setCustomerProperties", [&] {
        customerProps = std::move(customerProperties);
        const Value* id = customerProps.find("customer_id");
        if (id == nullptr) {
            return;
        }
        const std::string* text = id->asString();
        if (text == nullptr) {
            fatalError(std::string("\"customer_id\" of an event must be text, not ") + id->kindName());
        }
        facade()->setCustomerProperties(*text, {});
    });
}

Map CDPEvent::bodyMap() const {
    return entryPoint(
        "bodyMap",
        [&] {
            const auto instance = facade();
            auto account = instance->state()->account();
            if (!account->store) {
                return Map();
            }
            static const std::string none;
            return EventBody(*instance->state(), std::move(account), *this, none, none).map();
        },
        Map());
}

Map CDPEvent::encode() const {
    return entryPoint(
        "encode",
        [&] {
            const Map body = bodyMap();
            const auto part = [&body](const char* key) {
                const Value* value = body.find(key);
                return value != nullptr ? *value : Value(Map());
            };
            return Map{
                {"portal_id", portal_id},
                {"prop_id", prop_id},
                {"en", en},
                {"uid", uid},
                {"dims", part("dims")},
                {"extra", part("extra")},
                {"items", List(items.begin(), items.end())},
                {"resp_type", "json"},
                {"userproperties", userProps},
                {"customerproperties", customerProps},
            };
        },
        Map());
}

} // namespace zentavo
