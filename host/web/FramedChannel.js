'use strict';
// The module shell's "serve" framing over any byte stream, one request at a
// time: a request is "<METHOD> <N>\n" and N bytes of URL, an answer
// "<RESULT> <N>\n" and N bytes of page. The module takes one request at a
// time, so requests wait in a queue and the next one is written only after
// the previous answer has been read whole.
//
// The owner connects the stream: `attach(write)` once it can take bytes,
// `receive(chunk)` for every chunk read from it, `detach(error)` when it is
// gone (the request in flight then fails with `error`; queued ones stay for
// the next stream). Hooks, all optional:
//   wanted()        a request waits and no stream is attached
//   sent(entry)     a request has been written (its answer is now due)
//   answered(entry) its answer has been read
//   malformed()     the stream broke the framing: the owner must end it,
//                   since nothing after it can be matched to a request

function requestFrame(method, url) {
  const bytes = Buffer.from(url, 'latin1');
  return Buffer.concat([Buffer.from(`${method} ${bytes.length}\n`, 'latin1'), bytes]);
}

// The first whole answer at the start of `buffer`: { result, page, rest }
// (rest: the bytes after it), null when it has not come whole yet, false
// when the bytes are no answer.
function takeAnswer(buffer) {
  const end = buffer.indexOf(0x0a);
  if (end < 0) return null;
  const match = /^(\d+) (\d+)$/.exec(buffer.subarray(0, end).toString('latin1'));
  if (!match) return false;
  const length = Number(match[2]);
  if (buffer.length < end + 1 + length) return null;
  return {
    result: Number(match[1]),
    page: Buffer.from(buffer.subarray(end + 1, end + 1 + length)),
    rest: buffer.subarray(end + 1 + length),
  };
}

class FramedChannel {
  constructor(hooks = {}) {
    this.hooks = hooks;
    this.write = null;
    this.pending = []; // not yet answered; pending[0] may be in flight
    this.buffer = Buffer.alloc(0);
  }

  // Resolves to { result, page } (page a Buffer); rejects with the error of
  // `detach` or `cancel`.
  request(method, url) {
    return this.enqueue(method, url).promise;
  }

  // The same, as the queue's entry (for `cancel`) with the promise in it.
  enqueue(method, url) {
    const entry = { method, url, sent: false };
    entry.promise = new Promise((resolve, reject) => Object.assign(entry, { resolve, reject }));
    this.pending.push(entry);
    this.sendNext();
    return entry;
  }

  get inFlight() {
    return this.pending.length > 0 && this.pending[0].sent ? this.pending[0] : null;
  }

  attach(write) {
    this.write = write;
    this.buffer = Buffer.alloc(0);
    this.sendNext();
  }

  detach(error) {
    this.write = null;
    const failed = this.inFlight;
    if (failed) {
      this.pending.shift();
      failed.reject(error);
    }
    this.sendNext();
  }

  // Takes a request that has not been written out of the queue and rejects
  // it; false when it is already in flight (or answered).
  cancel(entry, error) {
    const index = this.pending.indexOf(entry);
    if (index < 0 || entry.sent) return false;
    this.pending.splice(index, 1);
    entry.reject(error);
    return true;
  }

  sendNext() {
    const next = this.pending[0];
    if (!next || next.sent) return;
    if (!this.write) {
      if (this.hooks.wanted) this.hooks.wanted();
      return;
    }
    next.sent = true;
    this.write(requestFrame(next.method, next.url));
    if (this.hooks.sent) this.hooks.sent(next);
  }

  receive(chunk) {
    this.buffer = Buffer.concat([this.buffer, chunk]);
    for (;;) {
      const answer = takeAnswer(this.buffer);
      if (answer === null) return;
      const answered = this.inFlight;
      if (answer === false || !answered) {
        this.buffer = Buffer.alloc(0);
        if (this.hooks.malformed) this.hooks.malformed();
        return;
      }
      this.buffer = answer.rest;
      this.pending.shift();
      if (this.hooks.answered) this.hooks.answered(answered);
      answered.resolve({ result: answer.result, page: answer.page });
      this.sendNext();
    }
  }
}

module.exports = { FramedChannel, requestFrame, takeAnswer };
