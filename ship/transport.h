#ifndef QZLOG_SHIP_TRANSPORT_H
#define QZLOG_SHIP_TRANSPORT_H

/* What a plug-in of `qzlog ship` is: it brings lines of logs to one kind of receiver, and reads them back from there.
 *
 * This header is plain C (C99, and C++), and installed as <qzlog/ship/transport.h>. A plug-in is a shared object
 * ship-NAME.so in the folder LIBDIR/qzlog; it serves the URLs whose scheme is NAME, or begins with NAME and a plus sign
 * (nats, nats+tls). It exports one function, which returns the address of a constant that lives as long as the plug-in
 * is loaded:
 *
 *   static const qzlog_transport transport = {
 *       QZLOG_TRANSPORT_VERSION, sizeof(qzlog_transport), "nats", "NATS JetStream, libnats 3.4",
 *       open_sender, send, close_sender, open_reader, read, settle, close_reader};
 *   const qzlog_transport* qzlog_ship_transport(void) { return &transport; }
 *
 * The rules:
 *
 * Versions. A version number names the meaning of all that is below. A host loads plug-ins of its own version alone.
 * Members may be added at the end of structs that have a `size`: what lies behind the size of the other side is not
 * there.
 *
 * Exceptions and signals. No exception leaves a function, in either direction, and none ends the process. A plug-in
 * installs no signal handler and changes neither the locale nor the working folder. SIGPIPE is ignored already.
 *
 * Threads. The functions of one sender or reader are called one at a time, and all by one thread. A plug-in may have
 * threads of its own, with all signals blocked in them; the functions of qzlog_host are for the calling thread alone,
 * and only until the call returns.
 *
 * Memory. What a pointer leads to is the other side's, and valid until the call returns that it was given to, unless it
 * says otherwise. Texts have a length and may lack a zero at their end. They are UTF-8 where that is said; a line may
 * hold any byte but the line feed.
 *
 * Time. A call may take as long as its `timeout_ms` says, or shortly longer. It is right to return earlier.
 *
 * Secrets. Credentials, and what is read from their file, go into no text that is handed to the host.
 */

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define QZLOG_TRANSPORT_VERSION 1u

#if defined(__GNUC__)
#define QZLOG_TRANSPORT_EXPORT __attribute__((visibility("default")))
#else
#define QZLOG_TRANSPORT_EXPORT
#endif

typedef struct qzlog_text {
  const char* bytes; /* not null, where the size is not 0 */
  size_t size;
} qzlog_text;

/* Where a plug-in says why something failed: it is shown to people behind the URL and a colon, and stored. One line of
 * UTF-8, zero-terminated, without a full stop at its end; it says what to do next where that is not plain. A longer
 * text is cut. */
typedef struct qzlog_error {
  char text[1024];
} qzlog_error;

/* What came of a call. */
typedef enum qzlog_outcome {
  QZLOG_DONE = 0,  /* it did what it was to do; what became of each record stands beside it */
  QZLOG_LATER = 1, /* the receiver cannot be reached, or takes nothing now: the host waits and tries again. A sender is
                      closed and opened again then */
  QZLOG_NEVER = 2  /* it will not work without somebody's help, as with an unknown option, wrong credentials or a stream
                      that does not exist: the command ends, and what was not acknowledged is delivered when it is
                      started again */
} qzlog_outcome;

/* ---- What both directions are opened with ---- */

typedef struct qzlog_option {
  const char* key; /* not empty; letters, digits, '-', '_' and '.' */
  const char* value;
} qzlog_option;

typedef struct qzlog_settings {
  size_t size; /* of this struct */
  /* scheme://authority/path, each zero-terminated, without credentials, which the host refuses in a URL, and without
   * "?...". The authority is as it was written, such as "a:4222,b:4222" or "[::1]:4222". */
  const char* url;
  const char* scheme;           /* in small letters: "nats+tls" */
  const char* authority;        /* may be empty */
  const char* path;             /* empty, or begins with '/'; percent signs are as they were written */
  const char* ca_file;          /* certificates to trust (PEM); null: those of the system */
  const char* credentials_file; /* null: none. Its form is the receiver's own; the plug-in reads it when it opens */
  const qzlog_option* options;  /* a key stands there once. One that the plug-in does not know is QZLOG_NEVER */
  size_t option_count;
  const char* client; /* who is speaking, for the receiver's logs: "qzlog-ship/1.0.0 HOST" */
} qzlog_settings;

/* ---- Records ---- */

/* What a value is. Integers outside int64_t are QZLOG_NUMBER. */
typedef enum qzlog_kind {
  QZLOG_ABSENT = 0,
  QZLOG_BOOL = 1,    /* integer: 0 or 1 */
  QZLOG_INTEGER = 2, /* integer */
  QZLOG_NUMBER = 3,  /* number; NaN and infinities too */
  QZLOG_TEXT = 4,    /* text: UTF-8 */
  QZLOG_TIME = 5     /* text: RFC 3339, of an attribute that the definitions give one of the types of times */
} qzlog_kind;

typedef struct qzlog_value {
  int32_t kind; /* a qzlog_kind */
  int64_t integer;
  double number;
  qzlog_text text;
} qzlog_value;

typedef struct qzlog_attribute {
  qzlog_text name; /* UTF-8 */
  qzlog_value value;
} qzlog_attribute;

/* A line of a log on its way to a receiver. */
typedef struct qzlog_record {
  /* Tells it apart from every other record of every host, and is the same whenever the line is sent: receivers drop
   * doubles by it. Printable ASCII without blanks. */
  qzlog_text identity;
  qzlog_text line;    /* to be carried unchanged, in one place, so that it comes back equal; without its line feed */
  qzlog_text writer;  /* as the line names it, HOST/PID/START; empty where it does not */
  uint64_t seq;       /* of the writer; 0 where the line has none */
  qzlog_text product; /* as the command line names it; may be empty */
  qzlog_text event;   /* the event's name; empty where nobody knows it */
  uint32_t id;        /* of the event; 0 where the line has none */
  int32_t level;      /* 0 to 9, 9 being the most important; -1: a line of lost or held entries, or no level is known */
} qzlog_record;

/* What became of a record. */
typedef enum qzlog_fate {
  QZLOG_AGAIN = 0,        /* nothing is known, or it did not get there: it is sent again */
  QZLOG_ACKNOWLEDGED = 1, /* the receiver has it, as safely as it keeps anything */
  QZLOG_DOUBLE = 2,       /* the receiver has it, and had it before: it dropped this one */
  QZLOG_REFUSED = 3       /* it will never take it, whenever it is sent: the record goes to the dead letters */
} qzlog_fate;

typedef struct qzlog_result {
  int32_t fate; /* a qzlog_fate; QZLOG_AGAIN when send is called */
  /* Why the record was refused, zero-terminated UTF-8: valid until the next call of this sender. Null else. */
  const char* reason;
} qzlog_result;

/* ---- What the host does for a plug-in ---- */

typedef struct qzlog_host {
  size_t size;   /* of this struct */
  void* context; /* the first argument of each function */

  /* Says something to whoever operates the command, such as that the receiver's window for doubles is short: once for
   * each text. */
  void (*warn)(void* context, const char* text);
  /* Not 0: the command is to end, and what waits for long should return. May be asked at any time. */
  int (*is_ending)(void* context);

  /* About a record of the call that is under way. What they return is valid until the next of these calls. */

  /* A member of the line itself: "time", "written", "definitions", "name", ... kind is QZLOG_ABSENT where there is
   * none; so it is where the line is no JSON. */
  qzlog_value (*find_member)(void* context, const qzlog_record* record, const char* name);
  /* An attribute of the entry by its name. */
  qzlog_value (*find_attribute)(void* context, const qzlog_record* record, const char* name);
  /* All of them in the order of the line; null where there are none. */
  const qzlog_attribute* (*attributes)(void* context, const qzlog_record* record, size_t* count);
  /* When the entry was, in nanoseconds since 1970; of a line without entry, when it was written. 0: the line does not
   * say it, and *nanoseconds stays as it is. */
  int (*moment)(void* context, const qzlog_record* record, int64_t* nanoseconds);
  /* The message as people read it, in the language of the command line: UTF-8. 0 where there is none, because no
   * definitions were named, or they do not know the entry. Takes about as long as all else that is done for a record.
   */
  int (*body)(void* context, const qzlog_record* record, qzlog_text* body);
} qzlog_host;

/* ---- Reading ---- */

typedef enum qzlog_start_kind {
  QZLOG_FROM_BEGINNING = 0,
  QZLOG_FROM_SEQUENCE = 1, /* the first record with this number of the receiver's, or a later one */
  QZLOG_FROM_TIME = 2,     /* the first that the receiver took at this moment or later */
  QZLOG_FROM_NOW = 3       /* what comes from now on */
} qzlog_start_kind;

typedef struct qzlog_start {
  size_t size;         /* of this struct */
  int32_t kind;        /* a qzlog_start_kind. With a group that has read before: where it is */
  uint64_t sequence;   /* QZLOG_FROM_SEQUENCE */
  int64_t nanoseconds; /* QZLOG_FROM_TIME: since 1970 */
  const char* group;   /* null: alone. Else all readers that name it share the records: each goes to one of them, and
                          one that was not settled by a reader that is gone goes to another */
  int32_t follow;      /* 0: the end is where the receiver's end was at opening; else it is waited for more */
} qzlog_start;

typedef struct qzlog_received {
  qzlog_text line;     /* as it was sent */
  qzlog_text identity; /* as it was sent; empty where the receiver keeps none */
  uint64_t sequence;   /* of the receiver: for QZLOG_FROM_SEQUENCE; 0 where it has none */
  int64_t nanoseconds; /* when the receiver took it, since 1970; 0 where it does not say */
  uint64_t token;      /* for settle */
  int32_t again;       /* not 0: it may have been given to a reader before */
} qzlog_received;

/* ---- The plug-in ---- */

typedef struct qzlog_sender qzlog_sender; /* whatever the plug-in makes of them */
typedef struct qzlog_reader qzlog_reader;

typedef struct qzlog_transport {
  uint32_t version;        /* QZLOG_TRANSPORT_VERSION: stays the first member of all versions */
  uint32_t size;           /* of this struct */
  const char* name;        /* the NAME of ship-NAME.so */
  const char* description; /* for people: what it speaks to, and with which library of which version */

  /* Connects to the receiver and sees that it is ready: that the stream exists, that it may be written. `settings` and
   * `host` stay valid until close. QZLOG_DONE with *sender, else with a text in `error`. */
  qzlog_outcome (*open_sender)(const qzlog_settings* settings, const qzlog_host* host, uint32_t timeout_ms,
                               qzlog_sender** sender, qzlog_error* error);
  /* Sends `count` (1 or more) records, in their order as far as the receiver has one, and waits for what the receiver
   * says of each, or until the time is over. `results` has as many places. A fate counts whatever is returned: with
   * QZLOG_DONE the records that are still QZLOG_AGAIN are sent again by this sender, after a while; QZLOG_LATER and
   * QZLOG_NEVER need a text in `error`. A record that is acknowledged is never sent again; one that is sent again may
   * have arrived. */
  qzlog_outcome (*send)(qzlog_sender* sender, const qzlog_record* records, size_t count, uint32_t timeout_ms,
                        qzlog_result* results, qzlog_error* error);
  /* Frees it; waits for nothing. */
  void (*close_sender)(qzlog_sender* sender);

  /* The same for reading. All four are null where the receiver cannot be read from. */
  qzlog_outcome (*open_reader)(const qzlog_settings* settings, const qzlog_host* host, const qzlog_start* start,
                               uint32_t timeout_ms, qzlog_reader** reader, qzlog_error* error);
  /* Up to `most` (1 or more) records, valid until the next call of this reader; waits for the first one as long as the
   * time says. QZLOG_DONE with *count 0 and *at_end 0: none came; with *at_end 1: there are no more. QZLOG_LATER: the
   * connection is lost; the same reader is asked again after a while and goes on where it was, else it says
   * QZLOG_NEVER. */
  qzlog_outcome (*read)(qzlog_reader* reader, qzlog_received* records, size_t most, uint32_t timeout_ms, size_t* count,
                        int32_t* at_end, qzlog_error* error);
  /* Says for a group that these records are done with, and waits until the receiver knows. What was read and is not
   * settled when a reader ends is read again. QZLOG_LATER: some may not be known; they come again. */
  qzlog_outcome (*settle)(qzlog_reader* reader, const uint64_t* tokens, size_t count, uint32_t timeout_ms,
                          qzlog_error* error);
  void (*close_reader)(qzlog_reader* reader);
} qzlog_transport;

/* What a plug-in exports, its name and its type. */
QZLOG_TRANSPORT_EXPORT const qzlog_transport* qzlog_ship_transport(void);
#define QZLOG_TRANSPORT_FUNCTION "qzlog_ship_transport"
typedef const qzlog_transport* (*qzlog_ship_transport_function)(void);

#ifdef __cplusplus
}
#endif

#endif /* QZLOG_SHIP_TRANSPORT_H */
