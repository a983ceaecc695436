// SPDX-License-Identifier: Apache-2.0
/** JSON-RPC 2.0 on the session's socket, case by case as its text shows them. */

import assert from 'node:assert/strict';
import fs from 'node:fs';
import net from 'node:net';
import path from 'node:path';
import {after, before, describe, test} from 'node:test';

import {FAKE_ENGINE, Television, until} from './television.js';

let television;

before(async () => {
  television = await Television.switchOn({engine: FAKE_ENGINE, size: '320x180'});
});
after(() => television.switchOff());

/**
 * Sends messages, and after them a request as a mark: answers of methods that do not wait come in order, so what came
 * before the mark's answer is all that comes.
 */
function exchange(...messages) {
  return new Promise((resolve, reject) => {
    const client = net.connect(television.socket);
    const answers = [];
    let text = '';
    client.on('error', reject);
    client.on('data', (data) => {
      const lines = (text += data).split('\n');
      text = lines.pop();
      for (const line of lines) {
        const answer = JSON.parse(line);
        if (answer.id === 'mark') {
          client.end();
          resolve(answers);
        } else if (answer.method === undefined) {
          answers.push(answer);
        }
      }
    });
    const mark = '{"jsonrpc": "2.0", "method": "events.since", "params": [0], "id": "mark"}';
    client.write([...messages, mark, ''].join('\n'));
  });
}

/** The one answer to one message. */
async function answerTo(message) {
  const answers = await exchange(message);
  assert.equal(answers.length, 1, `one answer to ${message}: ${JSON.stringify(answers)}`);
  return answers[0];
}

/** Whether it is an error answer of exactly the form that the text gives it. */
function assertError(answer, code, id) {
  assert.deepEqual(Object.keys(answer).sort(), ['error', 'id', 'jsonrpc']);
  assert.equal(answer.jsonrpc, '2.0');
  assert.equal(answer.error.code, code);
  assert.equal(typeof answer.error.message, 'string');
  assert.deepEqual(Object.keys(answer.error).filter((key) => !['code', 'message', 'data'].includes(key)), []);
  assert.strictEqual(answer.id, id);
}

function assertResult(answer, result, id) {
  assert.deepEqual(answer, {jsonrpc: '2.0', result, id});
}

const ON = '"session.followLog", "params": {"on": false}';

describe('calls', () => {
  test('with positional parameters', async () => {
    assertResult(await answerTo('{"jsonrpc": "2.0", "method": "session.followLog", "params": [false], "id": 1}'), true, 1);
    const [first] = (await exchange('{"jsonrpc": "2.0", "method": "events.since", "params": [23], "id": 2}'));
    assertResult(first, {events: [], missing: 0}, 2);
  });

  test('with named parameters', async () => {
    assertResult(await answerTo(`{"jsonrpc": "2.0", "method": ${ON}, "id": 3}`), true, 3);
    assertResult(await answerTo(`{"jsonrpc": "2.0", "id": 4, "params": {"on": false}, "method": "session.followLog"}`),
                 true, 4);
  });

  test('without parameters', async () => {
    assert.equal(typeof (await answerTo('{"jsonrpc": "2.0", "method": "session.status", "id": 5}')).result, 'object');
  });
});

describe('notifications', () => {
  test('are never answered', async () => {
    assert.deepEqual(await exchange(`{"jsonrpc": "2.0", "method": ${ON}}`), []);
    assert.deepEqual(await exchange('{"jsonrpc": "2.0", "method": "foobar"}'), []);
    assert.deepEqual(await exchange('{"jsonrpc": "2.0", "method": "session.followLog", "params": [1, 2, 3]}'), []);
  });

  test('are carried out', async () => {
    await exchange('{"jsonrpc": "2.0", "method": "command.AddEventCallback", "params": ["carried out"]}');
    const log = path.join(television.folder, 'engine.log');
    await until('the command in the engine', () => fs.readFileSync(log, 'utf8').includes('"carried out"'));
  });
});

describe('errors', () => {
  test('a method that does not exist', async () => {
    assertError(await answerTo('{"jsonrpc": "2.0", "method": "foobar", "id": "1"}'), -32601, '1');
  });

  test('invalid JSON', async () => {
    assertError(await answerTo('{"jsonrpc": "2.0", "method": "foobar, "params": "bar", "baz]'), -32700, null);
  });

  test('a request that is none', async () => {
    assertError(await answerTo('{"jsonrpc": "2.0", "method": 1, "params": "bar"}'), -32600, null);
  });

  test('invalid parameters', async () => {
    assertError(await answerTo('{"jsonrpc": "2.0", "method": "session.followLog", "id": 1}'), -32602, 1);
    assertError(await answerTo('{"jsonrpc": "2.0", "method": "session.followLog", "params": ["yes"], "id": 1}'), -32602, 1);
    assertError(await answerTo('{"jsonrpc": "2.0", "method": "session.followLog", "params": {"off": true}, "id": 1}'),
                -32602, 1);
  });

  test('parameters that are neither an object nor a list', async () => {
    for (const params of ['"bar"', '1', 'true', 'null']) {
      assertError(await answerTo(`{"jsonrpc": "2.0", "method": "session.status", "params": ${params}, "id": 7}`), -32600, 7);
    }
  });

  test('a version that is missing or another', async () => {
    for (const version of ['', '"jsonrpc": "1.0", ', '"jsonrpc": 2.0, ', '"jsonrpc": "2", ']) {
      assertError(await answerTo(`{${version}"method": "session.status", "id": 8}`), -32600, 8);
    }
  });
});

describe('batches', () => {
  test('invalid JSON is one error', async () => {
    assertError(await answerTo('[{"jsonrpc": "2.0", "method": "sum", "params": [1,2,4], "id": "1"}, ' +
                               '{"jsonrpc": "2.0", "method"]'), -32700, null);
  });

  test('an empty one is one error', async () => {
    assertError(await answerTo('[]'), -32600, null);
  });

  test('an invalid one that is not empty', async () => {
    const answer = await answerTo('[1]');
    assert.equal(answer.length, 1);
    assertError(answer[0], -32600, null);
  });

  test('an invalid one: an error for each', async () => {
    const answer = await answerTo('[1,2,3]');
    assert.equal(answer.length, 3);
    answer.forEach((one) => assertError(one, -32600, null));
  });

  test('a mixed one', async () => {
    const answer = await answerTo('[' + [
      '{"jsonrpc": "2.0", "method": "session.followLog", "params": [false], "id": "1"}',
      '{"jsonrpc": "2.0", "method": "session.followLog", "params": [false]}',
      '{"jsonrpc": "2.0", "method": "events.since", "params": [42], "id": "2"}',
      '{"foo": "boo"}',
      '{"jsonrpc": "2.0", "method": "foo.get", "params": {"name": "myself"}, "id": "5"}',
      '{"jsonrpc": "2.0", "method": "session.status", "id": "9"}',
    ].join(',') + ']');
    assert.equal(answer.length, 5);
    const byId = new Map(answer.map((one) => [one.id, one]));
    assertResult(byId.get('1'), true, '1');
    assertResult(byId.get('2'), {events: [], missing: 0}, '2');
    assertError(byId.get(null), -32600, null);
    assertError(byId.get('5'), -32601, '5');
    assert.equal(typeof byId.get('9').result, 'object');
  });

  test('only notifications: no answer, not even an empty list', async () => {
    assert.deepEqual(await exchange('[{"jsonrpc": "2.0", "method": "session.followLog", "params": [false]}, ' +
                                    '{"jsonrpc": "2.0", "method": "notify_hello", "params": [7]}]'), []);
  });
});

describe('ids', () => {
  for (const id of ['"1"', '""', '"\u00e4\u20ac\\u0000"', '0', '-1', '9007199254740991', '1.5', 'null']) {
    test(`${id} comes back with its type and value`, async () => {
      const answer = await answerTo(`{"jsonrpc": "2.0", "method": ${ON}, "id": ${id}}`);
      assertResult(answer, true, JSON.parse(id));
    });
  }

  for (const id of ['true', '[1]', '{"a": 1}']) {
    test(`${id} is none`, async () => {
      assertError(await answerTo(`{"jsonrpc": "2.0", "method": ${ON}, "id": ${id}}`), -32600, null);
    });
  }
});

test('a connection survives whatever it has sent', async () => {
  const answers = await exchange('', '{', 'null', '"text"', '[[]]', '{}', '\u0000', '['.repeat(1000),
                                 `{"jsonrpc": "2.0", "method": ${ON}, "id": 1}`);
  assertResult(answers.at(-1), true, 1);
  assert.equal(answers.length, 8);
});

test('answers hold no member that is not theirs', async () => {
  assert.deepEqual(Object.keys(await answerTo('{"jsonrpc": "2.0", "method": "session.status", "id": 1, "more": 2}')).sort(),
                   ['id', 'jsonrpc', 'result']);
});
