// SPDX-License-Identifier: Apache-2.0
/**
 * The picture player for applications: text commands go out, results and events come back, over one WebSocket.
 *
 *     const emp = new Emp('ws://127.0.0.1:8080/ws?token=...');
 *     emp.onEvent((event) => console.log(event.event, event.picture));
 *     await emp.open('org.example.slideshow', 'slideshow.main');
 *     await emp.execute('InitPlayer', '/pictures/a.jpg');
 *     await emp.execute('SetDisplayArea', 0, 0, 0, 0);
 *     await emp.execute('StartPlayback');
 *
 * Runs in a browser, and in Node with a WebSocket class passed in. Needs nothing else.
 * @module
 */

/**
 * An event of the player: 10 decoded, 8 on the screen, 6 cannot be shown.
 * @typedef {object} PlayerEvent
 * @property {number} sequence 1, 2, 3 ... within the session
 * @property {number} time milliseconds since 1970
 * @property {string} picture path of the last command that named one
 * @property {number} event
 * @property {string} name
 * @property {string} param1
 * @property {string} param2
 */

/**
 * The end of the engine's process.
 * @typedef {object} EngineExit
 * @property {number} [status] exit status; absent when a signal ended it
 * @property {number} [signal]
 * @property {boolean} restarted whether another one runs by now; its player is empty
 * @property {string[]} log its last lines
 */

/** @typedef {'closed' | 'connecting' | 'connected' | 'lost'} ConnectionState 'lost' while it tries again */

/** The connection went while a call was under way: it may have been carried out or not. */
export const CONNECTION_LOST = 'connection-lost';
/** There was no connection to begin with: the call was not carried out. */
export const NOT_CONNECTED = 'not-connected';

/** Waits before each attempt to connect again, in milliseconds; the last one repeats. */
const RECONNECT_DELAYS = [250, 500, 1000, 2000, 4000];

const EVENT = 'engine.event';
const EXITED = 'engine.exited';
const LOST = 'session.lost';
const PAST = 'events.since';
// Of this library; no method is called so.
const STATE = 'state';
const MISSING = 'missing';

/** A call that did not succeed. */
export class EmpError extends Error {
  /**
   * @param {string} message
   * @param {number | string} code a JSON-RPC 2.0 error number, CONNECTION_LOST or NOT_CONNECTED
   * @param {*} [data] what else the television says about it
   */
  constructor(message, code, data) {
    super(message);
    this.name = 'EmpError';
    this.code = code;
    this.data = data;
  }
}

/** One television. Calls may overlap; the engine runs their commands in the order in which they were made. */
export class Emp {
  #url;
  #WebSocket;
  #socket = /** @type {WebSocket | null} */ (null);
  #retry = /** @type {*} a timer, whatever the platform makes of it */ (undefined);
  #attempts = 0;
  #connected = /** @type {Promise<PlayerEvent[]>} */ (Promise.resolve([]));
  #state = /** @type {ConnectionState} */ ('closed');
  #nextId = 1;
  #pending = new Map();
  #listeners = new Map();
  #lastSequence = 0;
  /** Events that came while the missed ones are being asked for; null when none are. */
  #held = /** @type {PlayerEvent[] | null} */ (null);

  /**
   * @param {string} url of the television's WebSocket, with its token
   * @param {object} [options]
   * @param {typeof globalThis.WebSocket} [options.WebSocket] the class to connect with, where there is no global one
   */
  constructor(url, {WebSocket: Socket = globalThis.WebSocket} = {}) {
    if (!Socket) {
      throw new EmpError('this platform has no WebSocket: pass the class of a package as {WebSocket}', NOT_CONNECTED);
    }
    this.#url = url;
    this.#WebSocket = Socket;
  }

  /** @returns {ConnectionState} */
  get state() {
    return this.#state;
  }

  /** The sequence number of the newest event seen. */
  get lastSequence() {
    return this.#lastSequence;
  }

  /**
   * Connects, without opening an application. From then on a lost connection is made again until `disconnect()`, and
   * events that were missed meanwhile are delivered.
   * @returns {Promise<PlayerEvent[]>} the events so far; rejects when the television cannot be reached or refuses
   */
  connect() {
    if (this.#state === 'closed') {
      this.#connected = this.#connect();
    }
    return this.#connected;
  }

  /**
   * Connects where that was not done yet, and opens an application in the engine.
   * @param {string} applicationId
   * @param {string} widgetId its part before a dot names the key that announces the application's state
   */
  async open(applicationId, widgetId) {
    await this.connect();
    await this.call('app.open', {applicationId, widgetId});
  }

  /**
   * Runs a command of the engine. The player itself reports failures as 0; an EmpError says that the command did not
   * reach it, or that there is no such command.
   * @param {string} command
   * @param {...(string | number)} params up to four
   * @returns {Promise<number | string>} the command's result
   */
  execute(command, ...params) {
    return this.call('engine.execute', {command, params: params.map(String)});
  }

  /**
   * Runs a command of the engine that takes a list of parameters.
   * @param {string} command
   * @param {(string | number)[]} params from position 1 of the list; position 0 holds the command
   * @returns {Promise<number | string>}
   */
  executeWithParamList(command, params) {
    return this.call('engine.executeWithParamList', {command, params: params.map(String)});
  }

  /**
   * Announces the application's state, as the platform does when another application comes to the front.
   * @param {'pause' | 'resume' | 'destroy'} state
   */
  async setState(state) {
    await this.call('app.setState', {state});
  }

  /** Closes the application in the engine, and the connection. */
  async close() {
    try {
      await this.call('app.close');
    } finally {
      this.disconnect();
    }
  }

  /** Closes the connection for good. The application stays open in the engine. */
  disconnect() {
    clearTimeout(this.#retry);
    const socket = this.#socket;
    this.#socket = null;
    this.#held = null;
    this.#rejectPending();
    this.#setState('closed');
    socket?.close();
  }

  /**
   * @param {(event: PlayerEvent) => void} listener called once for each event, in their order
   * @returns {() => void} ends it
   */
  onEvent(listener) {
    return this.on(EVENT, listener);
  }

  /**
   * @param {(exit: EngineExit) => void} listener
   * @returns {() => void} ends it
   */
  onEngineExit(listener) {
    return this.on(EXITED, listener);
  }

  /**
   * @param {(state: ConnectionState) => void} listener
   * @returns {() => void} ends it
   */
  onStateChange(listener) {
    return this.on(STATE, listener);
  }

  /**
   * The television remembers a thousand events. Who was away for longer is told how many are gone.
   * @param {(count: number) => void} listener
   * @returns {() => void} ends it
   */
  onMissing(listener) {
    return this.on(MISSING, listener);
  }

  /**
   * Any other notification of the television.
   * @param {string} method
   * @param {(params: *) => void} listener
   * @returns {() => void} ends it
   */
  on(method, listener) {
    const listeners = this.#listeners.get(method) ?? new Set();
    this.#listeners.set(method, listeners.add(listener));
    return () => listeners.delete(listener);
  }

  /**
   * Calls any method of the television.
   * @param {string} method
   * @param {object | Array<*>} [params]
   * @returns {Promise<*>} rejects with an EmpError
   */
  call(method, params) {
    const socket = this.#socket;
    if (socket?.readyState !== this.#WebSocket.OPEN) {
      return Promise.reject(new EmpError('there is no connection to the television', NOT_CONNECTED));
    }
    const id = this.#nextId++;
    socket.send(JSON.stringify({jsonrpc: '2.0', id, method, params}));
    return new Promise((resolve, reject) => this.#pending.set(id, {resolve, reject}));
  }

  async #connect() {
    this.#setState('connecting');
    try {
      await this.#dial();
      const {events} = await this.call(PAST, {sequence: 0});
      this.#lastSequence = events.at(-1)?.sequence ?? 0;
      this.#release([]);
      this.#attempts = 0;
      this.#setState('connected');
      return events;
    } catch (error) {
      this.disconnect();
      throw error;
    }
  }

  /** @param {ConnectionState} state */
  #setState(state) {
    if (state !== this.#state) {
      this.#state = state;
      this.#tell(STATE, state);
    }
  }

  /** @param {string} method @param {*} params */
  #tell(method, params) {
    for (const listener of [...(this.#listeners.get(method) ?? [])]) {
      listener(params);
    }
  }

  #dial() {
    const socket = new this.#WebSocket(this.#url);
    this.#socket = socket;
    this.#held = [];
    return new Promise((resolve, reject) => {
      socket.addEventListener('open', resolve);
      socket.addEventListener('message', ({data}) => this.#onMessage(data));
      const fail = () => reject(new EmpError('the television cannot be reached, or does not know this token', NOT_CONNECTED));
      socket.addEventListener('error', fail);  // "close" follows, but not from the WebSocket of Node 20
      socket.addEventListener('close', () => {
        fail();
        if (socket === this.#socket) {
          this.#onLoss();
        }
      });
    });
  }

  #onLoss() {
    this.#socket = null;
    this.#rejectPending();
    if (this.#state === 'connected' || this.#state === 'lost') {
      this.#setState('lost');
      const delay = RECONNECT_DELAYS[Math.min(this.#attempts++, RECONNECT_DELAYS.length - 1)];
      this.#retry = setTimeout(() => this.#reconnect(), delay);
    }
  }

  async #reconnect() {
    try {
      await this.#dial();
      await this.#catchUp();
      this.#attempts = 0;
      this.#setState('connected');
    } catch {
      this.#socket?.close();  // where it is not gone already; its end starts the next attempt
    }
  }

  #rejectPending() {
    const pending = [...this.#pending.values()];
    this.#pending.clear();
    for (const {reject} of pending) {
      reject(new EmpError('the connection to the television was lost before the answer', CONNECTION_LOST));
    }
  }

  /** @param {string} text */
  #onMessage(text) {
    const message = JSON.parse(text);
    for (const one of Array.isArray(message) ? message : [message]) {
      if (one.method === undefined) {
        this.#onAnswer(one);
      } else {
        this.#onNotification(one.method, one.params);
      }
    }
  }

  /** @param {{id: number, result?: *, error?: {message: string, code: number, data?: *}}} answer */
  #onAnswer({id, result, error}) {
    const call = this.#pending.get(id);
    this.#pending.delete(id);
    if (error) {
      call?.reject(new EmpError(error.message, error.code, error.data));
    } else {
      call?.resolve(result);
    }
  }

  /** @param {string} method @param {*} params */
  #onNotification(method, params) {
    if (method === EVENT) {
      this.#onEvent(params);
      return;
    }
    if (method === LOST && !this.#held) {
      this.#held = [];
      this.#catchUp().catch(() => {});  // the connection went: the next one catches up
    }
    this.#tell(method, params);
  }

  /** @param {PlayerEvent} event */
  #onEvent(event) {
    if (this.#held) {
      this.#held.push(event);
    } else if (event.sequence > this.#lastSequence) {
      this.#lastSequence = event.sequence;
      this.#tell(EVENT, event);
    }
  }

  /** Delivers what was missed before what came meanwhile. */
  async #catchUp() {
    const {events, missing} = await this.call(PAST, {sequence: this.#lastSequence});
    if (missing > 0) {
      this.#tell(MISSING, missing);
    }
    this.#release(events);
  }

  /** @param {PlayerEvent[]} missed */
  #release(missed) {
    const held = this.#held ?? [];
    this.#held = null;
    for (const event of [...missed, ...held]) {
      this.#onEvent(event);
    }
  }
}
