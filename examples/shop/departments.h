#ifndef SHOP_DEPARTMENTS_H
#define SHOP_DEPARTMENTS_H

class EventLog;

/// What the service's threads do: each works for so many rounds and tells what happens. The same happens in each run.
void take_orders(EventLog& log, unsigned rounds);
void take_payments(EventLog& log, unsigned rounds);
void look_after_stock(EventLog& log, unsigned rounds);
void serve_customers(EventLog& log, unsigned rounds);

#endif  // SHOP_DEPARTMENTS_H
