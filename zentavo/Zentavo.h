#pragma once

/// Everything that a host application needs of the SDK.
#include "zentavo/core/Configuration.h"
#include "zentavo/core/Endpoints.h"
#include "zentavo/core/UserDefaultsManager.h"
#include "zentavo/core/Zentavo.h"
#include "zentavo/inapp/DeliveryTrace.h"
#include "zentavo/inbox/AppInbox.h"
#include "zentavo/inbox/SocketIOManager.h"
#include "zentavo/push/ZentavoNotificationService.h"
#include "zentavo/push/ZentavoUNUserNotificationCenter.h"
#include "zentavo/tracking/CDPEvent.h"
