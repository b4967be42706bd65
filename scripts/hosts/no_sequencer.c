/* SPDX-License-Identifier: ISC
 * For LD_PRELOAD: stands in for the ALSA sequencer (/dev/snd/seq), which containers lack and
 * Qtractor does not start without. No MIDI comes or goes. build: gcc -shared -fPIC -o
 * no_sequencer.so no_sequencer.c */
#include <errno.h>
#include <poll.h>
#include <stddef.h>
#include <unistd.h>
#define API __attribute__((visibility("default")))
static char handle[4096];
static int ends[2] = {-1, -1}, ports, queues;
API int snd_seq_open(void** h, const char* name, int streams, int mode) {
  (void)name, (void)streams, (void)mode;
  *h = handle;
  return 0;
}
API int snd_seq_close(void* h) {
  (void)h;
  return 0;
}
API int snd_seq_client_id(void* h) {
  (void)h;
  return 128;
}
API int snd_seq_set_client_name(void* h, const char* n) {
  (void)h, (void)n;
  return 0;
}
API int snd_seq_nonblock(void* h, int n) {
  (void)h, (void)n;
  return 0;
}
API int snd_seq_create_simple_port(void* h, const char* n, unsigned c, unsigned t) {
  (void)h, (void)n, (void)c, (void)t;
  return ports++;
}
API int snd_seq_create_port(void* h, void* i) {
  (void)h, (void)i;
  return 0;
}
API int snd_seq_delete_simple_port(void* h, int p) {
  (void)h, (void)p;
  return 0;
}
API int snd_seq_delete_port(void* h, int p) {
  (void)h, (void)p;
  return 0;
}
API int snd_seq_alloc_queue(void* h) {
  (void)h;
  return queues++;
}
API int snd_seq_alloc_named_queue(void* h, const char* n) {
  (void)h, (void)n;
  return queues++;
}
API int snd_seq_free_queue(void* h, int q) {
  (void)h, (void)q;
  return 0;
}
API int snd_seq_control_queue(void* h, int q, int t, int v, void* e) {
  (void)h, (void)q, (void)t, (void)v, (void)e;
  return 0;
}
API int snd_seq_set_queue_tempo(void* h, int q, void* t) {
  (void)h, (void)q, (void)t;
  return 0;
}
API int snd_seq_get_queue_tempo(void* h, int q, void* t) {
  (void)h, (void)q, (void)t;
  return 0;
}
API int snd_seq_set_queue_timer(void* h, int q, void* t) {
  (void)h, (void)q, (void)t;
  return 0;
}
API int snd_seq_get_queue_status(void* h, int q, void* s) {
  (void)h, (void)q, (void)s;
  return 0;
}
API int snd_seq_poll_descriptors_count(void* h, short e) {
  (void)h, (void)e;
  return 1;
}
API int snd_seq_poll_descriptors(void* h, struct pollfd* p, unsigned n, short e) {
  (void)h, (void)e;
  if (ends[0] < 0 && pipe(ends)) return 0;
  if (n) {
    p->fd = ends[0];
    p->events = POLLIN;
    p->revents = 0;
  }
  return n ? 1 : 0;
}
API int snd_seq_event_input(void* h, void** e) {
  (void)h;
  if (e) *e = NULL;
  return -EAGAIN;
}
API int snd_seq_event_input_pending(void* h, int f) {
  (void)h, (void)f;
  return 0;
}
API int snd_seq_event_output(void* h, void* e) {
  (void)h, (void)e;
  return 0;
}
API int snd_seq_event_output_direct(void* h, void* e) {
  (void)h, (void)e;
  return 0;
}
API int snd_seq_drain_output(void* h) {
  (void)h;
  return 0;
}
API int snd_seq_drop_output(void* h) {
  (void)h;
  return 0;
}
API int snd_seq_drop_input(void* h) {
  (void)h;
  return 0;
}
API int snd_seq_remove_events(void* h, void* r) {
  (void)h, (void)r;
  return 0;
}
API int snd_seq_free_event(void* e) {
  (void)e;
  return 0;
}
API int snd_seq_get_any_client_info(void* h, int c, void* i) {
  (void)h, (void)c, (void)i;
  return -ENOENT;
}
API int snd_seq_get_any_port_info(void* h, int c, int p, void* i) {
  (void)h, (void)c, (void)p, (void)i;
  return -ENOENT;
}
API int snd_seq_get_port_info(void* h, int p, void* i) {
  (void)h, (void)p, (void)i;
  return 0;
}
API int snd_seq_set_port_info(void* h, int p, void* i) {
  (void)h, (void)p, (void)i;
  return 0;
}
API int snd_seq_get_port_subscription(void* h, void* s) {
  (void)h, (void)s;
  return -ENOENT;
}
API int snd_seq_query_next_client(void* h, void* i) {
  (void)h, (void)i;
  return -ENOENT;
}
API int snd_seq_query_next_port(void* h, void* i) {
  (void)h, (void)i;
  return -ENOENT;
}
API int snd_seq_query_port_subscribers(void* h, void* s) {
  (void)h, (void)s;
  return -ENOENT;
}
API int snd_seq_subscribe_port(void* h, void* s) {
  (void)h, (void)s;
  return 0;
}
API int snd_seq_unsubscribe_port(void* h, void* s) {
  (void)h, (void)s;
  return 0;
}
