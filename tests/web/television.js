// SPDX-License-Identifier: Apache-2.0
/** A television for a test: `tvsim serve` on a screen of its own, in a folder of its own. @module */

import {spawn} from 'node:child_process';
import {once} from 'node:events';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import readline from 'node:readline';
import {fileURLToPath} from 'node:url';

const ROOT = fileURLToPath(new URL('../..', import.meta.url));
export const BINARIES = process.env.TVSIM_BINARIES ?? path.join(ROOT, 'build/dev/bin');
/** An engine that shows nothing, for tests of the protocol. */
export const FAKE_ENGINE = path.join(ROOT, 'tests/tvsim/fake-engine');

/** For a condition that comes within a second on a quiet machine. */
export const GENEROUS = 30000;

/** Looks again and again until `look` gives something; fails after a generous time. */
export async function until(what, look) {
  const deadline = Date.now() + GENEROUS;
  for (;;) {
    const found = await look();
    if (found) {
      return found;
    }
    if (Date.now() > deadline) {
      throw new Error(`waited in vain: ${what}`);
    }
    await new Promise((resolve) => setTimeout(resolve, 10));
  }
}

/** A picture of one colour. @param {number[]} rgb 0 to 255 */
export function writePicture(file, rgb, width = 64, height = 36) {
  const header = Buffer.from(`P6 ${width} ${height} 255\n`);
  fs.writeFileSync(file, Buffer.concat([header, Buffer.alloc(width * height * 3, Buffer.from(rgb))]));
  return file;
}

export class Television {
  /**
   * @param {object} [options]
   * @param {(folder: string) => string[]} [options.pictures] makes them in the test's folder
   * @param {string} [options.engine]
   * @param {string} [options.size] of the screen
   */
  static async switchOn({pictures = () => [], engine = path.join(BINARIES, 'picture-player'), size = '1280x720'} = {}) {
    const television = new Television();
    television.folder = fs.mkdtempSync(path.join(os.tmpdir(), 'tvsim-web-'));
    television.pictures = pictures(television.folder);
    await television.#start(['serve', '--headless', `--size=${size}`, `--engine=${engine}`,
                             `--engine-log=${path.join(television.folder, 'engine.log')}`, ...television.pictures]);
    return television;
  }

  async #start(args) {
    // However the test ends, its television ends too.
    this.process = spawn('setpriv', ['--pdeathsig', 'TERM', path.join(BINARIES, 'tvsim'), ...args], {
      env: {...process.env, XDG_RUNTIME_DIR: this.folder, XDG_STATE_HOME: `${this.folder}/state`, OLM_LOG_FILE: ''},
      stdio: ['ignore', 'pipe', 'pipe'],
    });
    this.errors = '';
    this.process.stderr.on('data', (text) => {
      this.errors += text;
    });
    const ended = once(this.process, 'exit').then(([status]) => {
      throw new Error(`tvsim serve ended with ${status}: ${this.errors}`);
    });
    ended.catch(() => {});
    const lines = readline.createInterface({input: this.process.stdout})[Symbol.asyncIterator]();
    const line = async () => (await lines.next()).value ?? ended;
    this.url = (await line()).match(/http:\S+/)[0];
    this.viewUrl = (await line()).match(/http:\S+/)[0];
  }

  /** host:port */
  get host() {
    return new URL(this.url).host;
  }

  get socket() {
    return path.join(this.folder, 'tvsim/tv/control');
  }

  /** The address of the WebSocket, with its token. */
  get webSocket() {
    return `ws://${this.host}/ws?token=${this.token}`;
  }

  get token() {
    return new URLSearchParams(new URL(this.url).hash.slice(1)).get('token');
  }

  /** Processes of that name which this television has started; they have inherited its folder. */
  processesNamed(name) {
    const isOurs = (id) => {
      try {
        return fs.readFileSync(`/proc/${id}/comm`, 'utf8').trim() === name &&
            fs.readFileSync(`/proc/${id}/environ`, 'utf8').includes(this.folder);
      } catch {
        return false;  // it has ended meanwhile
      }
    };
    return fs.readdirSync('/proc').filter((entry) => /^\d+$/.test(entry) && isOurs(entry)).map(Number);
  }

  async killEngine() {
    const [engine] = await until('the engine', () => {
      const engines = this.processesNamed('picture-player');
      return engines.length > 0 && engines;
    });
    process.kill(engine, 'SIGKILL');
  }

  async switchOff() {
    if (this.process.exitCode === null) {
      const ended = once(this.process, 'exit');
      this.process.kill('SIGTERM');
      await ended;
    }
    fs.rmSync(this.folder, {recursive: true});
  }
}
