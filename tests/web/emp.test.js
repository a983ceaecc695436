// SPDX-License-Identifier: Apache-2.0
/** The client library outside a browser, with a television. */

import assert from 'node:assert/strict';
import {once} from 'node:events';
import net from 'node:net';
import path from 'node:path';
import {after, afterEach, before, beforeEach, describe, test} from 'node:test';

import {CONNECTION_LOST, Emp, NOT_CONNECTED} from '../../simulator/web/emp.js';
import {WebSocket} from './packages.js';
import {Television, until, writePicture} from './television.js';

let television;

before(async () => {
  television = await Television.switchOn({
    pictures: (folder) => [writePicture(path.join(folder, 'a.ppm'), [9, 9, 99])],
  });
});
after(() => television.switchOff());

/** Shows the picture once more: two events. */
async function showPicture(emp) {
  const [picture] = television.pictures;
  assert.equal(await emp.execute('InitPlayer', picture), 1);
  assert.equal(await emp.execute('StartPlayback'), 1);
}

describe('an application', () => {
  let emp;
  beforeEach(() => {
    emp = new Emp(television.webSocket, {WebSocket});
  });
  afterEach(() => emp.disconnect());

  test('opens, commands, hears events and closes', async () => {
    const heard = [];
    emp.onEvent(({event}) => heard.push(event));
    await emp.open('org.example.test', 'test.node');
    await showPicture(emp);
    await until('two events', () => heard.length === 2);
    assert.deepEqual(heard, [10, 8]);
    assert.equal(await emp.execute('SetDisplayArea', 0, 0, 480, 270), 1);
    assert.equal(await emp.executeWithParamList('SetDisplayArea', [0, 0, 480, 270, 540]), 1);
    await emp.setState('pause');
    await emp.setState('resume');
    // Shown anew, which is reported: the next test would hear it.
    await until('the resumed picture', () => heard.length === 4);
    assert.deepEqual(heard.slice(2), [10, 8]);
    await emp.close();
    assert.equal(emp.state, 'closed');
  });

  test('is told of errors with their number', async () => {
    await emp.connect();
    await assert.rejects(emp.execute('frobnicate'), {name: 'EmpError', code: -32601});
    await assert.rejects(emp.setState('asleep'), {name: 'EmpError', code: -32602});
  });

  test('is told without a connection', async () => {
    await assert.rejects(emp.execute('Stop'), {code: NOT_CONNECTED});
  });

  test('is refused with a wrong token', async () => {
    const stranger = new Emp(television.webSocket.replace(/token=.*/, 'token=guess'), {WebSocket});
    await assert.rejects(stranger.connect(), {code: NOT_CONNECTED});
    assert.equal(stranger.state, 'closed');
  });

  test('ends a listener', async () => {
    await emp.connect();
    let count = 0;
    const end = emp.onEvent(() => ++count);
    const all = [];
    emp.onEvent((event) => all.push(event));
    end();
    await showPicture(emp);
    await until('two events', () => all.length === 2);
    assert.equal(count, 0);
  });
});

/** A line between client and television that can be cut. */
class Line {
  #sockets = new Set();
  #server = net.createServer((socket) => this.#connect(socket));
  broken = false;

  async open() {
    this.#server.listen(0, '127.0.0.1');
    await once(this.#server, 'listening');
    return this;
  }

  /** A WebSocket class over this line that says the television's own name. */
  get WebSocket() {
    const port = this.#server.address().port;
    return class extends WebSocket {
      constructor(url) {
        super(url.replace(television.host, `127.0.0.1:${port}`), {headers: {Host: television.host}});
      }
    };
  }

  cut() {
    this.broken = true;
    this.#sockets.forEach((socket) => socket.destroy());
  }

  close() {
    this.cut();
    this.#server.close();
  }

  #connect(socket) {
    if (this.broken) {
      socket.destroy();
      return;
    }
    const [host, port] = television.host.split(':');
    const onward = net.connect(port, host);
    for (const end of [socket, onward]) {
      this.#sockets.add(end);
      end.on('error', () => {}).on('close', () => this.#sockets.delete(end));
    }
    socket.pipe(onward).pipe(socket);
  }
}

describe('when the connection is lost', () => {
  let line, far, near;
  beforeEach(async () => {
    line = await new Line().open();
    far = new Emp(television.webSocket, {WebSocket: line.WebSocket});
    near = new Emp(television.webSocket, {WebSocket});
    await Promise.all([far.connect(), near.connect()]);
  });
  afterEach(() => {
    far.disconnect();
    near.disconnect();
    line.close();
  });

  async function awaitState(state) {
    await until(state, () => far.state === state);
  }

  test('it is made again, and events that were missed come in their order, once', async () => {
    const heard = [];
    far.onEvent(({sequence}) => heard.push(sequence));
    await showPicture(near);
    await until('the first events', () => heard.length === 2);
    line.cut();
    await awaitState('lost');
    const before = near.lastSequence;
    await showPicture(near);
    await until('events at the other client', () => near.lastSequence === before + 2);
    line.broken = false;
    await awaitState('connected');
    await showPicture(near);
    await until('all events', () => heard.length === 6);
    assert.deepEqual(heard, heard.map((_, i) => heard[0] + i));
  });

  test('a call under way is told so, a later one that there is none', async () => {
    const call = far.call('session.status');
    line.cut();
    await assert.rejects(call, {code: CONNECTION_LOST});
    await awaitState('lost');
    await assert.rejects(far.execute('Stop'), {code: NOT_CONNECTED});
  });
});

test('the end of the engine is told, and the next one works', async () => {
  const emp = new Emp(television.webSocket, {WebSocket});
  await emp.connect();
  const exits = [], heard = [];
  emp.onEngineExit((exit) => exits.push(exit));
  emp.onEvent(({event}) => heard.push(event));
  await television.killEngine();
  await until('the end', () => exits.length === 1);
  assert.deepEqual([exits[0].signal, exits[0].restarted], [9, true]);
  await showPicture(emp);
  await until('the picture', () => heard.length === 2);
  emp.disconnect();
});
