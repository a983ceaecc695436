// SPDX-License-Identifier: Apache-2.0
/** The page's modules that need no page and no television. */

import assert from 'node:assert/strict';
import {afterEach, beforeEach, describe, mock, test} from 'node:test';

import {colouredPieces} from '../../simulator/web/ansi.js';
import {Emp} from '../../simulator/web/emp.js';
import {Player} from '../../simulator/web/player.js';

describe('attempts to connect again', () => {
  /** A WebSocket that opens and answers at once, or closes where `accepts` is false. */
  class Socket extends EventTarget {
    static OPEN = 1;
    static made = [];
    static accepts = true;

    constructor() {
      super();
      Socket.made.push(this);
      queueMicrotask(() => Socket.accepts ? this.#open() : this.close());
    }

    #open() {
      this.readyState = Socket.OPEN;
      this.dispatchEvent(new Event('open'));
    }

    send(text) {
      const answer = {jsonrpc: '2.0', id: JSON.parse(text).id, result: {events: [], missing: 0}};
      queueMicrotask(() => this.dispatchEvent(new MessageEvent('message', {data: JSON.stringify(answer)})));
    }

    close() {
      this.readyState = 3;
      this.dispatchEvent(new Event('close'));
    }
  }

  let emp;
  beforeEach(async () => {
    mock.timers.enable({apis: ['setTimeout']});
    Socket.made = [];
    Socket.accepts = true;
    emp = new Emp('ws://nowhere', {WebSocket: Socket});
    await emp.connect();
  });
  afterEach(() => mock.timers.reset());

  /** Lets that many milliseconds pass; how many connections were tried by then. */
  async function attemptsAfter(time) {
    mock.timers.tick(time);
    await new Promise(setImmediate);
    return Socket.made.length - 1;
  }

  test('come ever more slowly, every four seconds in the end', async () => {
    Socket.accepts = false;
    Socket.made[0].close();
    const attempts = [];
    for (const time of [249, 1, 500, 1000, 2000, 4000, 4000, 3999, 1]) {
      attempts.push(await attemptsAfter(time));
    }
    assert.deepEqual(attempts, [0, 1, 2, 3, 4, 5, 6, 6, 7]);
  });

  test('begin quickly again once a connection stood', async () => {
    Socket.accepts = false;
    Socket.made[0].close();
    assert.deepEqual([await attemptsAfter(250), await attemptsAfter(500)], [1, 2]);
    Socket.accepts = true;
    assert.equal(await attemptsAfter(1000), 3);
    assert.equal(emp.state, 'connected');
    Socket.made.at(-1).close();
    assert.equal(await attemptsAfter(250), 4);
  });

  test('are not made after disconnect', async () => {
    Socket.made[0].close();
    emp.disconnect();
    assert.equal(await attemptsAfter(60000), 0);
  });
});

describe('events that were missed', () => {
  /** A WebSocket whose other side is the test. */
  class Socket extends EventTarget {
    static OPEN = 1;
    static newest;
    asked = [];

    constructor() {
      super();
      Socket.newest = this;
      queueMicrotask(() => {
        this.readyState = Socket.OPEN;
        this.dispatchEvent(new Event('open'));
      });
    }

    send(text) {
      this.asked.push(JSON.parse(text));
    }

    close() {
      this.dispatchEvent(new Event('close'));
    }

    say(message) {
      this.dispatchEvent(new MessageEvent('message', {data: JSON.stringify({jsonrpc: '2.0', ...message})}));
    }

    sayEvent(sequence) {
      this.say({method: 'engine.event', params: {sequence}});
    }

    /** Answers the question for past events. */
    answer(sequences, missing = 0) {
      const {id} = this.asked.pop();
      this.say({id, result: {events: sequences.map((sequence) => ({sequence})), missing}});
    }
  }

  const turn = () => new Promise(setImmediate);
  let emp, heard;

  /** Connected, with events up to 3 known. */
  beforeEach(async () => {
    heard = [];
    emp = new Emp('ws://nowhere', {WebSocket: Socket});
    emp.onEvent(({sequence}) => heard.push(sequence));
    const connected = emp.connect();
    await turn();
    Socket.newest.answer([1, 2, 3]);
    await connected;
  });
  afterEach(() => {
    emp.disconnect();
    mock.timers.reset();
  });

  async function loseConnection() {
    mock.timers.enable({apis: ['setTimeout']});
    Socket.newest.close();
    mock.timers.tick(250);
    await turn();
  }

  test('are asked for from the last one on', async () => {
    Socket.newest.sayEvent(4);
    await loseConnection();
    assert.deepEqual(Socket.newest.asked.map(({method, params}) => [method, params]), [['events.since', {sequence: 4}]]);
  });

  test('come before those that came while they were asked for, and each once', async () => {
    await loseConnection();
    Socket.newest.sayEvent(6);
    Socket.newest.sayEvent(7);
    assert.deepEqual(heard, []);
    Socket.newest.answer([4, 5, 6]);
    await turn();
    assert.deepEqual(heard, [4, 5, 6, 7]);
    Socket.newest.sayEvent(8);
    assert.deepEqual(heard, [4, 5, 6, 7, 8]);
  });

  test('are asked for too when the television says that it left some out', async () => {
    Socket.newest.say({method: 'session.lost', params: {count: 2}});
    Socket.newest.sayEvent(6);
    Socket.newest.answer([4, 5, 6]);
    await turn();
    assert.deepEqual(heard, [4, 5, 6]);
  });

  test('are counted where they are forgotten', async () => {
    const counts = [];
    emp.onMissing((count) => counts.push(count));
    await loseConnection();
    Socket.newest.answer([2000], 1996);
    await turn();
    assert.deepEqual([counts, heard], [[1996], [2000]]);
  });
});

describe('a line of the log', () => {
  const pieces = (line) => colouredPieces(line).map(({text, colour}) => [text, colour]);

  test('is cut where its colour changes', () => {
    assert.deepEqual(pieces('[a] \x1b[31mred\x1b[0m plain\x1b[1;34mblue'),
                     [['[a] ', ''], ['red', 'red'], [' plain', ''], ['blue', 'blue']]);
  });

  test('keeps its text whatever stands in it', () => {
    assert.deepEqual(pieces('\x1b[2K\x1b[38mx\x1b[ <b>'), [['x\x1b[ <b>', '']]);
    assert.deepEqual(pieces(''), []);
  });
});

/** An engine that answers 1, or what `answers` says, and shows at once what it is told to show. */
class Engine {
  commands = [];
  answers = {GetTransitionEffectList: 'fade,wipe,'};
  event = 8;
  #onEvent = [];
  #onExit = [];

  onEvent(listener) {
    this.#onEvent.push(listener);
  }

  onEngineExit(listener) {
    this.#onExit.push(listener);
  }

  async execute(command, ...params) {
    this.commands.push([command, ...params].join(' '));
    if (/StartPlayback|Effect$/.test(command) && this.event) {
      queueMicrotask(() => this.#onEvent.forEach((listener) => listener({event: this.event})));
    }
    return this.answers[command] ?? 1;
  }

  /** What was asked since the last time. */
  take() {
    return this.commands.splice(0);
  }

  exit(restarted) {
    this.#onExit.forEach((listener) => listener({signal: 9, restarted}));
  }
}

describe('a player', () => {
  const OPENING = ['InitPlayer /a', 'SetDisplayArea 0 0 0 0', 'GetTransitionEffectList', 'StartPlayback'];
  let engine, player, failures;

  beforeEach(() => {
    engine = new Engine();
    player = new Player(engine);
    player.pictures = ['/a', '/b', '/c'];
    failures = [];
    player.addEventListener('failure', ({detail}) => failures.push(detail.reason));
  });

  test('opens the first picture and changes to the others', async () => {
    assert.equal(await player.next(), true);
    assert.deepEqual(engine.take(), OPENING);
    assert.deepEqual(player.effects, ['fade', 'wipe']);
    await player.next();
    assert.deepEqual(engine.take(), ['ChangePlayingURL /b', 'StartPlayback']);
  });

  test('goes round at both ends', async () => {
    await player.previous();
    assert.equal(player.picture, '/c');
    await player.next();
    assert.equal(player.picture, '/a');
  });

  test('has a transition once there is something to come from', async () => {
    player.effect = 7;
    await player.next();
    await player.next();
    assert.deepEqual(engine.take().slice(3), ['StartPlayback', 'ChangePlayingURL /b', 'SetTransitionEffect 7']);
  });

  test('gives the picture to the engine again after a transition, before it is enlarged', async () => {
    player.effect = 7;
    await player.next();
    await player.next();
    engine.take();
    await player.setZoom(2);
    await player.move('left');
    assert.deepEqual(engine.take(), ['ChangePlayingURL /b', 'StartPlayback', 'SetZoomRatio 2', 'SetZoomMove 2']);
  });

  test('clears the screen when it stops after a transition', async () => {
    player.effect = 7;
    await player.next();
    await player.next();
    engine.take();
    await player.stop();
    assert.deepEqual(engine.take(), ['ClearScreen', 'Stop']);
    await player.next();
    engine.take();
    await player.stop();
    assert.deepEqual(engine.take(), ['Stop']);
    assert.equal(player.index, -1);
  });

  test('zoom and rotation reset each other, as in the engine', async () => {
    await player.next();
    await player.setZoom(3);
    await player.turn();
    assert.deepEqual([player.zoom, player.rotation], [1, 90]);
    await player.setZoom(99);
    assert.deepEqual([player.zoom, player.rotation], [16, 0]);
  });

  test('says why a picture does not come, and goes on with the next', async () => {
    engine.event = 6;
    assert.equal(await player.next(), false);
    engine.event = 8;
    engine.answers.ChangePlayingURL = 0;
    assert.equal(await player.next(), false);
    delete engine.answers.ChangePlayingURL;
    assert.equal(await player.next(), true);
    assert.deepEqual(failures, ['it cannot be shown', 'ChangePlayingURL answers 0']);
    assert.equal(player.picture, '/c');
  });

  test('begins anew with the next engine, with the picture that stood', async () => {
    await player.show(1);
    engine.take();
    engine.exit(true);
    await new Promise(setImmediate);
    assert.deepEqual(engine.take(), ['InitPlayer /b', 'SetDisplayArea 0 0 0 0', 'StartPlayback']);
  });

  test('does not show a picture again at which the engine ended', async () => {
    await player.show(1);
    engine.event = 0;
    const shown = player.show(2);
    await new Promise(setImmediate);
    engine.take();
    engine.exit(true);
    assert.equal(await shown, false);
    assert.deepEqual(engine.take(), []);
    assert.deepEqual(failures, ['the engine has ended']);
  });

  test('who holds a key down does not fill the queue', async () => {
    const all = Array.from({length: 50}, () => player.next());
    all.push(player.stop());
    await Promise.all(all);
    const commands = engine.take();
    assert.equal(commands.filter((command) => command === 'StartPlayback').length, 8);
    assert.equal(commands.at(-1), 'Stop');
  });

  describe('as a slide show', () => {
    beforeEach(() => mock.timers.enable({apis: ['setTimeout']}));
    afterEach(() => mock.timers.reset());

    async function pass(time) {
      mock.timers.tick(time);
      await new Promise(setImmediate);
      return player.index;
    }

    test('lets each picture stand for its time', async () => {
      player.interval = 1000;
      await player.play();
      assert.deepEqual([await pass(0), await pass(999), await pass(1), await pass(1000), await pass(1000)], [0, 0, 1, 2, 0]);
      await player.pause();
      assert.equal(await pass(60000), 0);
      assert.deepEqual(engine.take().filter((command) => command.startsWith('SetSlideShow')),
                       ['SetSlideShowStatus 1', 'SetSlideShowStatus 0']);
    });

    test('passes over a picture that does not come', async () => {
      player.interval = 1000;
      engine.event = 0;
      await player.play();
      assert.equal(await pass(0), 0);
      await pass(15000);
      engine.event = 8;
      assert.equal(await pass(1000), 1);
      assert.deepEqual(failures, ['it does not come within 15 s']);
    });
  });
});
