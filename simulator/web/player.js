// SPDX-License-Identifier: Apache-2.0
/**
 * Shows pictures as a television application would: knows which commands the engine wants in which state. Has no page
 * and no clock but the interval of the slide show.
 * @module
 */

const RENDER_ERROR = 6;
const RENDER_COMPLETED = 8;

/** A picture that takes longer is given up. */
const PICTURE_LIMIT = 15000;
const LARGEST_ZOOM = 16;
/** Pictures and moves that wait for their turn. */
const MOST_WAITING = 7;

/** Directions of SetZoomMove. */
export const MOVES = {up: 0, down: 1, left: 2, right: 3};

/** @typedef {'idle' | 'shown' | 'playing'} PlayerState */

export class Player extends EventTarget {
  #emp;
  #work = /** @type {Promise<*>} */ (Promise.resolve());
  #waiting = 0;
  #timer = null;
  /** "InitPlayer" was done, so that "ChangePlayingURL" is next. */
  #initialised = false;
  /** A picture stands on the screen, so that a transition has something to start from. */
  #shown = false;
  /** The engine still has the picture: it gives it up after a transition. */
  #loaded = false;
  #awaitShown = null;

  /** Paths. */
  pictures = [];
  /** Position in `pictures` of the one that is shown; -1 for none. */
  index = -1;
  /** Number of the transition; null for none. */
  effect = null;
  /** Milliseconds that a picture of a slide show stands. */
  interval = 4000;
  /** Names of the transitions, known once a picture was opened. */
  effects = [];
  zoom = 1;
  rotation = 0;
  playing = false;

  /** @param {import('./emp.js').Emp} emp with the application opened */
  constructor(emp) {
    super();
    this.#emp = emp;
    emp.onEvent((event) => this.#onEvent(event));
    emp.onEngineExit((exit) => this.#onEngineExit(exit));
  }

  get picture() {
    return this.pictures[this.index];
  }

  /** Shows a picture of the list; beyond its ends it goes round. @returns {Promise<boolean>} whether it is shown */
  show(index) {
    return this.#enqueueUnlessBusy(() => this.#show(index));
  }

  next() {
    return this.show(this.index + 1);
  }

  previous() {
    return this.show(this.index < 0 ? -1 : this.index - 1);
  }

  /** Starts the slide show, with the next picture where one stands already. */
  async play() {
    if (this.playing || this.pictures.length === 0) {
      return;
    }
    this.playing = true;
    this.#changed();
    await this.#enqueue(() => this.#emp.execute('SetSlideShowStatus', 1));
    this.#advance();
  }

  /** Ends the slide show; the picture stays. */
  async pause() {
    if (!this.playing) {
      return;
    }
    this.playing = false;
    clearTimeout(this.#timer);
    this.#changed();
    await this.#enqueue(() => this.#emp.execute('SetSlideShowStatus', 0));
  }

  /** Takes the picture off the screen. */
  async stop() {
    await this.pause();
    await this.#enqueue(async () => {
      if (!this.#loaded) {
        await this.#emp.execute('ClearScreen');  // "Stop" clears it only where the engine still has the picture
      }
      await this.#emp.execute('Stop');
    });
    this.index = -1;
    this.#forget();
  }

  /**
   * Enlarges the picture `ratio` times, 1 to 16; the engine turns it upright again. `zoom` says so at once, so that the
   * next key knows what it means.
   */
  async setZoom(ratio) {
    const before = this.zoom;
    const wanted = Math.min(Math.max(ratio, 1), LARGEST_ZOOM);
    if (wanted === before) {
      return;
    }
    this.zoom = wanted;
    const done = await this.#enqueueUnlessBusy(async () => await this.#load() && this.#succeeds('SetZoomRatio', wanted));
    if (done) {
      this.rotation = 0;
    } else if (this.zoom === wanted) {
      this.zoom = before;
    }
    this.#changed();
  }

  /** Moves the enlarged picture. @param {'up' | 'down' | 'left' | 'right'} direction */
  move(direction) {
    return this.#enqueueUnlessBusy(async () => await this.#load() && this.#succeeds('SetZoomMove', MOVES[direction]));
  }

  /** Turns the picture by a quarter, clockwise; it fits the screen again. */
  turn() {
    return this.#enqueueUnlessBusy(async () => {
      const wanted = (this.rotation + 90) % 360;
      if (await this.#load() && await this.#succeeds('SetRotation', wanted)) {
        this.rotation = wanted;
        this.zoom = 1;
        this.#changed();
      }
    });
  }

  /** @returns {Promise<boolean>} as `#enqueue`; but who holds a key down does not fill the queue. */
  async #enqueueUnlessBusy(work) {
    return this.#waiting <= MOST_WAITING && this.#enqueue(work);
  }

  /** One thing after the other. @returns {Promise<*>} what `work` returns; false where it was not done */
  #enqueue(work) {
    ++this.#waiting;
    const done = this.#work.then(work).catch((error) => this.#fail(error.message)).finally(() => --this.#waiting);
    this.#work = done;
    return done;
  }

  async #succeeds(command, ...params) {
    const result = await this.#emp.execute(command, ...params);
    return result === 0 ? this.#fail(`${command} answers 0`) : true;
  }

  async #show(index) {
    const count = this.pictures.length;
    if (count === 0) {
      return this.#fail('there are no pictures in the list');
    }
    this.index = ((index % count) + count) % count;
    this.zoom = 1;
    this.rotation = 0;
    this.#changed();
    if (!await this.#open(this.picture)) {
      return false;
    }
    const transition = this.#shown && this.effect !== null;
    const shown = await this.#present(...(transition ? ['SetTransitionEffect', this.effect] : ['StartPlayback']));
    this.#loaded = shown && !transition;
    return shown;
  }

  async #open(path) {
    if (this.#initialised) {
      return this.#succeeds('ChangePlayingURL', path);
    }
    this.#initialised = await this.#succeeds('InitPlayer', path) && await this.#succeeds('SetDisplayArea', 0, 0, 0, 0);
    if (this.#initialised && this.effects.length === 0) {
      const names = await this.#emp.execute('GetTransitionEffectList');
      this.effects = typeof names === 'string' ? names.split(',').filter(Boolean) : [];
      this.#changed();
    }
    return this.#initialised;
  }

  /** Runs the command that shows the opened picture, and waits until it stands. */
  async #present(command, ...params) {
    const outcome = new Promise((resolve) => {
      this.#awaitShown = resolve;
    });
    const limit = setTimeout(() => this.#awaitShown?.('it does not come within 15 s'), PICTURE_LIMIT);
    try {
      const failure = await this.#succeeds(command, ...params) && await outcome;
      this.#shown = this.#shown || failure === '';
      return failure === '' || this.#fail(failure || '');
    } finally {
      clearTimeout(limit);
      this.#awaitShown = null;
      this.#changed();
    }
  }

  /** Sees to it that the engine has the picture which it shows. */
  async #load() {
    if (this.index < 0) {
      return this.#fail('no picture is shown');
    }
    if (!this.#loaded) {
      this.#loaded = await this.#open(this.picture) && await this.#present('StartPlayback');
    }
    return this.#loaded;
  }

  #onEvent({event}) {
    if (event === RENDER_COMPLETED || event === RENDER_ERROR) {
      this.#awaitShown?.(event === RENDER_COMPLETED ? '' : 'it cannot be shown');
    }
  }

  /** The next engine shows what stood on the screen; not a picture that may have ended the last one. */
  #onEngineExit({restarted}) {
    const stood = this.#shown && !this.#awaitShown;
    this.#forget();
    if (restarted && stood) {
      this.show(this.index);
    }
  }

  async #advance() {
    await this.next();
    clearTimeout(this.#timer);
    if (this.playing) {
      this.#timer = setTimeout(() => this.#advance(), this.interval);
    }
  }

  #forget() {
    this.#initialised = this.#shown = this.#loaded = false;
    this.#awaitShown?.('the engine has ended');
    this.zoom = 1;
    this.rotation = 0;
    this.#changed();
  }

  /** @returns {false} */
  #fail(reason) {
    if (reason) {
      this.dispatchEvent(new CustomEvent('failure', {detail: {picture: this.picture, reason}}));
    }
    return false;
  }

  #changed() {
    this.dispatchEvent(new Event('change'));
  }
}
