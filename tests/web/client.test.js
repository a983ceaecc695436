// SPDX-License-Identifier: Apache-2.0
/** Somebody else's JSON-RPC 2.0 client as an application, on both ways into a session. */

import assert from 'node:assert/strict';
import net from 'node:net';
import path from 'node:path';
import readline from 'node:readline';
import {after, before, describe, test} from 'node:test';

import {JSONRPCClient, WebSocket} from './packages.js';
import {Television, until, writePicture} from './television.js';

const RENDER_COMPLETED = 8, DECODE_COMPLETED = 10;

let television;

before(async () => {
  television = await Television.switchOn({
    pictures: (folder) => ['a', 'b', 'c'].map((name, i) => writePicture(path.join(folder, `${name}.ppm`), [80 * i, 99, 9])),
  });
});
after(() => television.switchOff());

/** A client whose messages `send` carries, and the notifications that came. */
function clientOver(send) {
  const client = new JSONRPCClient(send);
  const events = [];
  const take = (text) => {
    const message = JSON.parse(text);
    if (message.method === 'engine.event') {
      events.push(message.params);
    } else if (message.method === undefined) {
      client.receive(message);
    }
  };
  return {client, events, take};
}

async function overSocket() {
  const socket = net.connect(television.socket);
  const one = clientOver((message) => {
    socket.write(`${JSON.stringify(message)}\n`);
  });
  readline.createInterface({input: socket}).on('line', one.take);
  return {...one, close: () => socket.end()};
}

async function overWebSocket() {
  const socket = new WebSocket(television.webSocket);
  const one = clientOver((message) => socket.send(JSON.stringify(message)));
  socket.on('message', (text) => one.take(text));
  await new Promise((resolve, reject) => socket.on('open', resolve).on('error', reject));
  return {...one, close: () => socket.close()};
}

/** A slide show of all pictures, as an application drives it. */
async function playSlideShow({client, events}) {
  const execute = (command, ...params) => client.request('engine.execute', {command, params});
  const [first, ...others] = television.pictures;
  const stands = (count) => until(`${count} pictures`,
                                  () => events.filter(({event}) => event === RENDER_COMPLETED).length === count);
  assert.equal(await execute('InitPlayer', first), 1);
  assert.equal(await execute('SetDisplayArea', '0', '0', '0', '0'), 1);
  assert.equal(await execute('StartPlayback'), 1);
  await stands(1);
  assert.equal(await execute('GetPictureSize'), '64*36');
  for (const [i, picture] of others.entries()) {
    assert.equal(await execute('ChangePlayingURL', picture), 1);
    assert.equal(await client.request('command.StartPlayback'), 1);
    await stands(i + 2);
  }
  assert.equal(await execute('Stop'), 1);
}

for (const [name, connect] of [['the Unix socket', overSocket], ['the WebSocket', overWebSocket]]) {
  describe(`json-rpc-2.0 over ${name}`, () => {
    test('plays a slide show and sees each picture stand', async () => {
      const connection = await connect();
      await playSlideShow(connection);
      connection.close();
      assert.deepEqual(connection.events.map(({event, picture}) => [event, picture]),
                       television.pictures.flatMap((path) => [[DECODE_COMPLETED, path], [RENDER_COMPLETED, path]]));
      const numbers = connection.events.map(({sequence}) => sequence);
      assert.deepEqual(numbers, numbers.map((_, i) => numbers[0] + i));
    });

    test('is told what was wrong', async () => {
      const {client, close} = await connect();
      await assert.rejects(async () => client.request('engine.execute', {command: 'frobnicate', params: []}), {code: -32601});
      await assert.rejects(async () => client.request('nothing.there'), {code: -32601});
      await assert.rejects(async () => client.request('command.SetRotation', {degrees: 'ninety'}), {code: -32602});
      close();
    });

    test('gets the answers of a hundred calls at once, each to its own', async () => {
      const {client, close} = await connect();
      const calls = Array.from({length: 100}, (_, i) => i % 2 ? client.request('engine.execute', {command: 'GetZoomRatio', params: []})
                                                              : client.request('pictures.list'));
      const answers = await Promise.all(calls);
      assert.ok(answers.every((answer, i) => i % 2 ? answer === 0 : answer.length === television.pictures.length));
      close();
    });
  });
}
