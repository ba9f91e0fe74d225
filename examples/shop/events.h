#ifndef SHOP_EVENTS_H
#define SHOP_EVENTS_H

/// The entry IDs of shop.yaml and shop_site.yaml.
enum Event : unsigned {
  kServiceStarted = 1,
  kServiceStopped = 2,
  kLookAround = 3,
  kEntriesLost = 4,
  kOrderPlaced = 100,
  kOrderChanged = 101,
  kOrderCancelled = 102,
  kOrderShipped = 103,
  kOrderDelivered = 104,
  kOrderDelayed = 105,
  kOrderReturned = 106,
  kPaymentReceived = 200,
  kPaymentRefused = 201,
  kPaymentRefunded = 202,
  kPaymentServiceSlow = 203,
  kPaymentServiceDown = 204,
  kFraudSuspected = 205,
  kStockLow = 300,
  kStockOut = 301,
  kStockDelivered = 302,
  kStockCounted = 303,
  kColdStoreWarm = 304,
  kCustomerRegistered = 400,
  kSignInRefused = 401,
  kComplaintReceived = 402,
  kNewsletterSent = 403,
  kDroneSent = 900,
  kLockerOpened = 901
};

/// How this service uses the levels 0 to 9, of which 9 is the most important.
enum Level : unsigned { kDebug = 1, kDetail = 2, kInfo = 3, kNotice = 4, kWarning = 5, kError = 7, kCritical = 8 };

#endif  // SHOP_EVENTS_H
