#include "departments.h"

#include <qzlog.h>

#include <string>

#include "event_log.h"
#include "events.h"

namespace {

/// Values of the selector attributes: each picks a message.
enum CancelReason : unsigned char { kByCustomer = 1, kNotPaid = 2, kSoldOut = 3 };
enum RefusalReason : unsigned char { kNoCover = 1, kCardExpired = 2 };

constexpr const char* kCustomers[] = {"Ana Souza", "Jürgen Groß", "佐藤 花子", "Zoë O'Brien"};
constexpr const char* kArticles[] = {"Café crème", "Green tea", "Müsli", "抹茶"};
constexpr const char* kCurrencies[] = {"EUR", "JPY", "USD"};

template <typename Value, unsigned kCount>
const Value& pick(const Value (&values)[kCount], unsigned round) {
  return values[round % kCount];
}

unsigned order_of(unsigned round) { return 10000 + round; }

/// Work that comes up every so many rounds, in round 0 for the first time.
bool every(unsigned rounds, unsigned round) { return round % rounds == 0; }

qz_LOG_LogEntry round_begun(const char* department, unsigned round) {
  qz_LOG_LogEntry entry(kLookAround, kDebug);
  entry.AddAttribStr("Department", department);
  entry.AddAttrib4u("Round", round);
  return entry;
}

/// Many events are about an order and nothing else, or about one more thing that is added.
qz_LOG_LogEntry about_order(unsigned event, unsigned level, unsigned round) {
  qz_LOG_LogEntry entry(event, level);
  entry.AddAttrib4u("Order", order_of(round));
  return entry;
}

qz_LOG_LogEntry about_money(unsigned event, unsigned level, unsigned round) {
  qz_LOG_LogEntry entry = about_order(event, level, round);
  entry.AddAttribFloat8("Amount", 12.5 * (1 + round % 7));
  entry.AddAttribStr("Currency", pick(kCurrencies, round));
  return entry;
}

qz_LOG_LogEntry order_placed(unsigned round) {
  qz_LOG_LogEntry entry = about_money(kOrderPlaced, kInfo, round);
  entry.AddAttrib2u("Items", static_cast<unsigned short>(1 + round % 5));
  entry.AddAttribMBStr("Customer", pick(kCustomers, round));
  return entry;
}

qz_LOG_LogEntry order_changed(unsigned round) {
  qz_LOG_LogEntry entry = about_order(kOrderChanged, kDetail, round);
  entry.AddAttrib2u("Items", static_cast<unsigned short>(2 + round % 5));
  return entry;
}

// With a reason that no message of the selector is for, readers see the default message.
qz_LOG_LogEntry order_cancelled(unsigned round) {
  constexpr CancelReason kReasons[] = {kByCustomer, kNotPaid, kSoldOut, static_cast<CancelReason>(9)};
  qz_LOG_LogEntry entry = about_order(kOrderCancelled, kNotice, round);
  entry.AddAttrib1u("Reason", pick(kReasons, round / 3));
  return entry;
}

// "Parcel" is this site's: shop_site.yaml adds it to the event, and shows it.
qz_LOG_LogEntry order_shipped(unsigned round) {
  qz_LOG_LogEntry entry = about_order(kOrderShipped, kInfo, round);
  entry.AddAttribMBStr("Carrier", "Päckchen & Co.");
  entry.AddAttribFloat8("Weight", 0.25 * (1 + round % 9));
  entry.AddAttribStr("Parcel", ("P-" + std::to_string(700000 + round)).c_str());
  return entry;
}

// Readers see the fields of a time as they were added. For the shop's own clock it is made local before.
qz_LOG_LogEntry order_delivered(unsigned round) {
  qz_Time delivered = qz_Time::now();
  delivered.GMT_to_local();
  qz_LOG_LogEntry entry = about_order(kOrderDelivered, kInfo, round);
  entry.AddAttribTime("Delivered", delivered);
  return entry;
}

qz_LOG_LogEntry order_delayed(unsigned round) {
  qz_LOG_LogEntry entry = about_order(kOrderDelayed, kWarning, round);
  entry.AddAttrib1u("Days", static_cast<unsigned char>(1 + round % 3));
  return entry;
}

// The customer's words may have any length: the limit of the attribute cuts them (see configure in shop.cpp).
qz_LOG_LogEntry order_returned(unsigned round) {
  std::string words = "It is not what I ordered.";
  for (unsigned i = 0; i < round % 10; ++i) words += "\nReally, and I am not amused at all!";
  qz_LOG_LogEntry entry = about_order(kOrderReturned, kNotice, round);
  entry.AddAttribMBStr("Customer", pick(kCustomers, round));
  entry.AddAttribMBStr("Words", words.c_str());
  return entry;
}

qz_LOG_LogEntry payment_refused(unsigned round) {
  qz_LOG_LogEntry entry = about_order(kPaymentRefused, kWarning, round);
  entry.AddAttrib1u("Reason", every(2, round) ? kNoCover : kCardExpired);
  return entry;
}

// SetEntry does in one call what takes a line for each attribute otherwise. The list ends with a null pointer.
qz_LOG_LogEntry payment_service_slow(unsigned round) {
  qz_LOG_LogEntry entry;
  entry.SetEntry(kPaymentServiceSlow, kWarning, "Service", "pay.example.net", "Milliseconds", 900 + round, nullptr);
  return entry;
}

qz_LOG_LogEntry payment_service_down() {
  qz_LOG_LogEntry entry;
  entry.SetEntry(kPaymentServiceDown, kCritical, "Service", "pay.example.net", "Failures", 3, nullptr);
  return entry;
}

qz_LOG_LogEntry fraud_suspected(unsigned round) {
  qz_LOG_LogEntry entry = about_order(kFraudSuspected, kError, round);
  entry.AddAttribStr("Card", "5500-0000-0000-0004");  // never in the log: its definition has it dropped
  return entry;
}

qz_LOG_LogEntry stock_low(unsigned round) {
  const unsigned left = 9 - round % 9;
  qz_LOG_LogEntry entry(kStockLow, kNotice);
  entry.AddAttrib2u("Left", static_cast<unsigned short>(left));
  entry.AddAttribMBStr("Article", pick(kArticles, round));
  entry.AddAttribFloat8("Share", left / 40.0);
  return entry;
}

qz_LOG_LogEntry stock_out(unsigned round) {
  qz_LOG_LogEntry entry(kStockOut, kWarning);
  entry.AddAttribMBStr("Article", pick(kArticles, round));
  return entry;
}

qz_LOG_LogEntry stock_delivered(unsigned round) {
  qz_LOG_LogEntry entry(kStockDelivered, kInfo);
  entry.AddAttrib2u("Pieces", static_cast<unsigned short>(20 + round % 20));
  entry.AddAttribMBStr("Article", pick(kArticles, round));
  entry.AddAttribMBStr("Supplier", "Åkesson AB");
  return entry;
}

qz_LOG_LogEntry stock_counted(unsigned round) {
  qz_Time today = qz_Time::now();
  today.GMT_to_local();
  qz_LOG_LogEntry entry(kStockCounted, kInfo);
  entry.AddAttribTime("Day", today);
  entry.AddAttribMBStr("Article", pick(kArticles, round));
  entry.AddAttrib2("Difference", static_cast<short>(static_cast<int>(round % 5) - 2));
  return entry;
}

qz_LOG_LogEntry cold_store_warm(unsigned round) {
  qz_LOG_LogEntry entry(kColdStoreWarm, kError);
  entry.AddAttrib1u("Store", 2);
  entry.AddAttrib1("Celsius", static_cast<char>(8 + round % 6));
  return entry;
}

qz_LOG_LogEntry about_customer(unsigned event, unsigned level, unsigned round) {
  qz_LOG_LogEntry entry(event, level);
  entry.AddAttribMBStr("Customer", pick(kCustomers, round));
  return entry;
}

qz_LOG_LogEntry sign_in_refused(unsigned round) {
  qz_LOG_LogEntry entry = about_customer(kSignInRefused, kWarning, round);
  entry.AddAttrib2u("Attempts", static_cast<unsigned short>(3 + round % 4));
  return entry;
}

qz_LOG_LogEntry complaint_received(unsigned round) {
  qz_LOG_LogEntry entry = about_customer(kComplaintReceived, kNotice, round);
  entry.AddAttribMBStr("Words", "Der Tee war kalt.");
  return entry;
}

qz_LOG_LogEntry newsletter_sent(unsigned round) {
  qz_LOG_LogEntry entry(kNewsletterSent, kInfo);
  entry.AddAttrib4u("Readers", 1200 + round);
  return entry;
}

qz_LOG_LogEntry drone_sent(unsigned round) {
  qz_LOG_LogEntry entry = about_order(kDroneSent, kInfo, round);
  entry.AddAttrib1u("Drone", 4);
  return entry;
}

qz_LOG_LogEntry locker_opened(unsigned round) {
  qz_LOG_LogEntry entry = about_order(kLockerOpened, kDetail, round);
  entry.AddAttrib2u("Locker", static_cast<unsigned short>(100 + round % 24));
  return entry;
}

}  // namespace

void take_orders(EventLog& log, unsigned rounds) {
  for (unsigned round = 0; round < rounds; ++round) {
    log.tell(round_begun("Orders", round));
    log.tell(order_placed(round));
    if (every(2, round)) log.tell(order_shipped(round));
    if (every(3, round)) log.tell(order_cancelled(round));
    if (every(3, round + 1)) log.tell(order_changed(round));
    if (every(4, round)) log.tell(order_delivered(round));
    if (every(5, round)) log.tell(order_delayed(round));
    if (every(6, round)) log.tell(locker_opened(round));
    if (every(7, round)) log.tell(drone_sent(round));
    if (every(9, round)) log.tell(order_returned(round));
  }
}

void take_payments(EventLog& log, unsigned rounds) {
  for (unsigned round = 0; round < rounds; ++round) {
    log.tell(round_begun("Payments", round));
    log.tell(about_money(kPaymentReceived, kInfo, round));
    if (every(4, round)) log.tell(payment_refused(round));
    if (every(6, round)) log.tell(about_money(kPaymentRefunded, kNotice, round));
    if (every(8, round)) log.tell(payment_service_slow(round));
    if (every(10, round)) log.tell(fraud_suspected(round));
    if (every(50, round)) log.tell(payment_service_down());
  }
}

void look_after_stock(EventLog& log, unsigned rounds) {
  for (unsigned round = 0; round < rounds; ++round) {
    log.tell(round_begun("Stock", round));
    if (every(2, round)) log.tell(stock_delivered(round));
    if (every(3, round)) log.tell(stock_low(round));
    if (every(6, round)) log.tell(stock_out(round));
    if (every(10, round)) log.tell(stock_counted(round));
    if (every(20, round)) log.tell(cold_store_warm(round));
  }
}

void serve_customers(EventLog& log, unsigned rounds) {
  for (unsigned round = 0; round < rounds; ++round) {
    log.tell(round_begun("Customers", round));
    if (every(2, round)) log.tell(about_customer(kCustomerRegistered, kInfo, round));
    if (every(3, round)) log.tell(sign_in_refused(round));
    if (every(5, round)) log.tell(complaint_received(round));
    if (every(25, round)) log.tell(newsletter_sent(round));
  }
}
