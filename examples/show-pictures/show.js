// SPDX-License-Identifier: Apache-2.0
/**
 * Shows pictures one after the other on the television whose page stands at ADDRESS, and says what became of each.
 *
 *     node --experimental-websocket show.js "$(tvsim url)" PICTURE...
 *
 * Exit status: 0 all were shown, 1 one was not, 2 wrong use.
 */
import {resolve} from 'node:path';

import {Emp} from 'picture-player-emp';

const RENDER_ERROR = 6;
const RENDER_COMPLETED = 8;

/** The page's address ends with #token=...; the television's own socket takes the same token. */
function socketOf(address) {
  const page = new URL(address);
  return `ws://${page.host}/ws?${page.hash.slice(1)}`;
}

/** Whether the player says that the picture stands; it says so once, or that it cannot be. */
function nextOutcome(emp) {
  return new Promise((tell) => {
    const stop = emp.onEvent(({event}) => {
      if (event === RENDER_COMPLETED || event === RENDER_ERROR) {
        stop();
        tell(event === RENDER_COMPLETED);
      }
    });
  });
}

async function show(emp, path) {
  const outcome = nextOutcome(emp);
  for (const [command, ...params] of [['InitPlayer', path], ['SetDisplayArea', 0, 0, 0, 0], ['StartPlayback']]) {
    if (await emp.execute(command, ...params) !== 1) {
      return `${command} failed`;
    }
  }
  const text = await outcome ? `shown, ${await emp.execute('GetPictureSize')}` : 'cannot be shown';
  await emp.execute('Stop');
  return text;
}

const [address, ...pictures] = process.argv.slice(2);
if (!address || pictures.length === 0) {
  console.error('usage: show.js ADDRESS PICTURE...');
  process.exit(2);
}
const emp = new Emp(socketOf(address));
try {
  await emp.open('org.example.pictures', 'pictures.main');
  for (const picture of pictures) {
    const text = await show(emp, resolve(picture));
    console.log(`${picture}: ${text}`);
    process.exitCode ||= text.startsWith('shown') ? 0 : 1;
  }
  await emp.close();
} catch (error) {
  console.error(`show.js: ${error.message}`);
  process.exit(1);
}
