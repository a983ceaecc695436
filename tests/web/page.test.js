// SPDX-License-Identifier: Apache-2.0
/** The page in a browser, as a person uses it. Leaves screenshots in build/web. */

import assert from 'node:assert/strict';
import http from 'node:http';
import path from 'node:path';
import {after, afterEach, before, beforeEach, describe, test} from 'node:test';

import {chromium, OUTPUT, WebSocket} from './packages.js';
import {GENEROUS, Television, until, writePicture} from './television.js';

const COLOURS = {red: [200, 30, 40], green: [30, 160, 60], blue: [40, 60, 200]};
const NAMES = Object.keys(COLOURS);
/** A JPEG is not exact. */
const TOLERANCE = 6;

let television, browser;

before(async () => {
  television = await Television.switchOn({
    pictures: (folder) => NAMES.map((name) => writePicture(path.join(folder, `${name}.ppm`), COLOURS[name], 320, 180)),
  });
  browser = await chromium.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    args: ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
           '--disable-background-networking', '--disable-component-update', '--disable-sync'],
  });
});
after(async () => {
  await browser?.close();
  await television?.switchOff();
});

let context, page, complaints;

async function open(options = {}, url = television.url, prepare = async () => {}) {
  context = await browser.newContext({viewport: {width: 1440, height: 900}, ...options});
  page = await context.newPage();
  page.setDefaultTimeout(GENEROUS);
  complaints = [];
  page.on('console', (message) => ['error', 'warning'].includes(message.type()) && complaints.push(message.text()));
  page.on('pageerror', (error) => complaints.push(error.message));
  await prepare();
  await page.goto(url);
  await page.waitForSelector('#connection[data-state=connected]');
  await page.waitForSelector('#chooser li, #empty:not([hidden])');
}

/** Leaves a dark television to the next test. */
async function leave() {
  await page.locator('#remote').focus();
  await page.keyboard.press('s');
  await awaitScreen([0, 0, 0]);
  await context.close();
}

/** The colour of the live screen at a place, 0 to 1 from left to right, half way down. */
function colourAt(place) {
  return page.evaluate((x) => {
    const screen = document.getElementById('screen');
    const one = new OffscreenCanvas(1, 1).getContext('2d');
    one.drawImage(screen, screen.width * x, screen.height / 2, 1, 1, 0, 0, 1, 1);
    return [...one.getImageData(0, 0, 1, 1).data].slice(0, 3);
  }, place);
}

async function awaitScreen(rgb) {
  let seen;
  await until(`the screen to be ${rgb}`, async () => {
    seen = await colourAt(0.5);
    return seen.every((value, i) => Math.abs(value - rgb[i]) <= TOLERANCE);
  }).catch((error) => assert.fail(`${error.message}; it is ${seen}`));
}

function awaitPicture(name) {
  return awaitScreen(COLOURS[name]);
}

function screenshot(name) {
  return page.screenshot({path: path.join(OUTPUT, `page-${name}.png`)});
}

describe('with the keyboard alone', () => {
  beforeEach(() => open());
  afterEach(leave);

  test('left and right show the pictures in turn', async () => {
    await page.keyboard.press('ArrowRight');
    await awaitPicture('red');
    await page.keyboard.press('ArrowRight');
    await awaitPicture('green');
    await page.keyboard.press('ArrowLeft');
    await awaitPicture('red');
    await page.keyboard.press('ArrowLeft');
    await awaitPicture('blue');
    assert.deepEqual(complaints, []);
  });

  test('up, down and Enter choose a picture, and Backspace takes it away', async () => {
    await page.keyboard.press('ArrowDown');
    await page.keyboard.press('ArrowDown');
    await page.keyboard.press('Enter');
    await awaitPicture('blue');
    assert.equal(await page.getAttribute('#screen', 'aria-label'), 'The screen shows blue.ppm');
    await page.keyboard.press('Backspace');
    await awaitScreen([0, 0, 0]);
  });

  test('a slide show runs, with transitions, until it is paused', async () => {
    await page.fill('#slideshow [name=seconds]', '0.5');
    await page.selectOption('#slideshow [name=effect]', {label: 'varying'});
    await page.locator('#remote').focus();
    await page.keyboard.press(' ');
    for (const name of [...NAMES, 'red']) {
      await awaitPicture(name);
    }
    await screenshot('slideshow');
    await page.keyboard.press(' ');
    await page.waitForSelector('#play:has-text("Play")');
  });

  test('plus enlarges, arrows move, Backspace shows all of it again', async () => {
    await page.keyboard.press('ArrowRight');
    await awaitPicture('red');
    await page.keyboard.press('+');
    await page.keyboard.press('ArrowRight');
    await page.keyboard.press('Backspace');
    await page.keyboard.press('r');
    // A picture that stands upright leaves black at both sides.
    await until('black at the left', async () => (await colourAt(0.1))[0] < 10);
    const commands = (await page.textContent('#log')).match(/Execute\(Set(Zoom|Rotation)[^)]*\)/g);
    assert.deepEqual(commands, ['Execute(SetZoomRatio,2,,,)', 'Execute(SetZoomMove,3,,,)', 'Execute(SetZoomRatio,1,,,)',
                                'Execute(SetRotation,90,,,)']);
  });

  test('the Tab key reaches everything there is, from the top to the bottom', async () => {
    const reached = new Set();
    await page.keyboard.press('Tab');
    for (let stop; stop !== 'log';) {
      stop = await page.evaluate(() => {
        const {id, name, dataset, textContent} = document.activeElement;
        return id || name || dataset.key || textContent;
      });
      assert.ok(!reached.has(stop), `the Tab key comes to ${stop} twice`);
      reached.add(stop);
      await page.keyboard.press('Tab');
    }
    for (const stop of ['up', 'ok', 'stop', 'tab-pictures', 'effect', 'chooser', 'path', 'events', 'traces']) {
      assert.ok(reached.has(stop), `the Tab key does not reach ${stop}, only ${[...reached]}`);
    }
  });
});

describe('what the television says', () => {
  beforeEach(() => open());
  afterEach(leave);

  test('events and the coloured log come as they happen', async () => {
    const earlier = await page.locator('#events .event').count();
    await page.keyboard.press('ArrowRight');
    await awaitPicture('red');
    const events = page.locator('#events .event');
    await until('two events', async () => await events.count() === earlier + 2);
    assert.match(await events.nth(earlier).textContent(), /10 decoded red\.ppm/);
    assert.match(await events.nth(earlier + 1).textContent(), /8 on the screen red\.ppm/);
    const colours = page.locator('#log li:not(.trace) .blue');
    await until('blue lines', async () => await colours.count() > 0);
    assert.doesNotMatch(await page.textContent('#log'), /\x1b/);
    assert.equal(await page.locator('#log .trace').first().isVisible(), false);
    await page.check('#traces');
    assert.equal(await page.locator('#log .trace').first().isVisible(), true);
    await screenshot('log');
  });

  test('a picture that cannot be shown is named', async () => {
    await page.fill('#add [name=path]', '/nowhere/missing.jpg');
    await page.press('#add [name=path]', 'Enter');
    await page.click('#chooser li:has-text("missing.jpg")');
    await page.waitForSelector('#events .bad:has-text("missing.jpg: InitPlayer answers 0")');
    await page.locator('#remote').focus();
    await page.keyboard.press('ArrowRight');
    await awaitPicture('red');
  });
});

describe('the commands', () => {
  before(async () => {
    await open();
    await page.click('#tab-commands');
  });
  after(leave);

  const form = (name) => page.locator(`form[data-method="command.${name}"]`);

  test('are all there, as forms with the parameters that they take', async () => {
    assert.equal(await page.locator('form[data-method^="command."]').count(), 24);
    assert.deepEqual(await form('SetDisplayArea').locator('label').allTextContents(), ['x ', 'y ', 'width ', 'height ']);
    await screenshot('commands');
  });

  test('show a picture, one by one', async () => {
    await form('InitPlayer').getByLabel('url', {exact: true}).fill(television.pictures[1]);
    await form('InitPlayer').getByLabel('url', {exact: true}).press('Enter');
    await form('InitPlayer').locator('output.done:has-text("1  in ")').waitFor();
    await form('SetDisplayArea').getByLabel('x', {exact: true}).fill('240');
    await form('SetDisplayArea').getByLabel('y', {exact: true}).fill('135');
    await form('SetDisplayArea').getByLabel('width', {exact: true}).fill('480');
    await form('SetDisplayArea').getByLabel('height', {exact: true}).fill('270');
    await form('SetDisplayArea').getByRole('button').click();
    await form('SetDisplayArea').locator('output.done').waitFor();
    await form('StartPlayback').getByRole('button').click();
    await awaitPicture('green');
    await form('GetPictureSize').getByRole('button').click();
    await form('GetPictureSize').locator('output.done:has-text("320*180")').waitFor();
  });

  test('say what went wrong', async () => {
    await form('Stop').getByRole('button').click();
    await form('Stop').locator('output.done').waitFor();
    await form('StartPlayback').getByRole('button').click();
    await form('StartPlayback').locator('output.failed:has-text("0  in ")').waitFor();
  });

  test('are found by a word', async () => {
    await page.fill('#filter', 'rotation');
    assert.equal(await page.locator('form[data-method]:visible').count(), 1);
    assert.equal(await form('SetRotation').isVisible(), true);
  });
});

describe('in bad times', () => {
  afterEach(leave);

  test('the engine is killed: the page says so, and the next engine shows the picture again', async () => {
    await open();
    await page.keyboard.press('ArrowRight');
    await awaitPicture('red');
    await television.killEngine();
    await page.waitForSelector('#events .bad:has-text("was ended by signal 9; another one runs")');
    await until('the restart in the head line', async () => /started again/.test(await page.textContent('#facts')));
    await awaitPicture('red');
    await page.keyboard.press('ArrowRight');
    await awaitPicture('green');
    await screenshot('after-kill');
  });

  test('the connection is lost: the page connects again and goes on', async () => {
    let route;
    await open({}, television.url, () => page.routeWebSocket(/\/ws/, (one) => {
      route = one;
      one.connectToServer();
    }));
    const lost = route;
    await lost.close();
    await page.waitForSelector('#connection[data-state=lost]');
    await page.waitForSelector('#connection[data-state=connected]');
    assert.notEqual(route, lost);
    await page.keyboard.press('ArrowRight');
    await awaitPicture('red');
    assert.match(await page.textContent('#events'), /connection lost/);
  });
});

describe('strangers', () => {
  /** How the server answers a WebSocket from somewhere. */
  function statusOf(url, headers) {
    return new Promise((resolve) => {
      const socket = new WebSocket(url, {headers});
      socket.on('open', () => resolve(101)).on('error', () => {});
      socket.on('unexpected-response', (_, response) => resolve(response.statusCode));
    });
  }

  test('a page of another origin cannot connect, not even with the token', async () => {
    const elsewhere = http.createServer((_, response) => response.setHeader('Content-Type', 'text/html').end('<p>hello'));
    await new Promise((resolve) => elsewhere.listen(0, '127.0.0.1', resolve));
    context = await browser.newContext();
    page = await context.newPage();
    await page.goto(`http://127.0.0.1:${elsewhere.address().port}/`);
    const connects = () => page.evaluate((url) => new Promise((resolve) => {
      const socket = new WebSocket(url);
      socket.onopen = () => resolve(true);
      socket.onerror = () => resolve(false);
    }), television.webSocket);
    assert.equal(await connects(), false);
    await context.close();
    elsewhere.close();
    assert.equal(await statusOf(television.webSocket, {Origin: 'http://127.0.0.1:1'}), 403);
    assert.equal(await statusOf(television.webSocket, {Origin: 'null'}), 403);
    assert.equal(await statusOf(television.webSocket, {Origin: `http://${television.host}`}), 101);
  });

  test('another name for this machine is refused', async () => {
    assert.equal(await statusOf(television.webSocket, {Host: 'evil.example'}), 421);
  });

  test('without the token nothing is told', async () => {
    assert.equal(await statusOf(`ws://${television.host}/ws`), 401);
    assert.equal(await statusOf(`ws://${television.host}/ws?token=${'0'.repeat(32)}`), 401);
    assert.equal((await fetch(`http://${television.host}/screen.jpg`)).status, 401);
  });

  test('who may only look on sees the screen and has no buttons to press', async () => {
    await open();
    await page.keyboard.press('ArrowRight');
    await awaitPicture('red');
    const control = {context, page};
    await open({}, television.viewUrl);
    await awaitPicture('red');
    await page.waitForSelector('[data-key=ok]:disabled');
    await page.keyboard.press('ArrowRight');
    await awaitPicture('red');
    assert.deepEqual(complaints, []);
    await context.close();
    ({context, page} = control);
    await leave();
  });
});

describe('the look', () => {
  afterEach(() => context.close());

  const widest = () => page.evaluate(() => document.documentElement.scrollWidth - innerWidth);

  test('fits a phone', async () => {
    await open({viewport: {width: 360, height: 740}, isMobile: true, hasTouch: true, deviceScaleFactor: 2});
    assert.ok(await widest() <= 0, 'the page is wider than the phone');
    await page.tap('[data-key=right]');
    await awaitPicture('red');
    const sizes = await page.locator('#remote button').evaluateAll(
        (buttons) => buttons.map((button) => Math.min(button.offsetWidth, button.offsetHeight)));
    assert.ok(Math.min(...sizes) >= 40, `a thumb needs 40 pixels: ${sizes}`);
    await screenshot('phone');
    await page.tap('[data-key=stop]');
  });

  test('fits a tablet and a large screen', async () => {
    for (const viewport of [{width: 820, height: 1180}, {width: 1920, height: 1080}]) {
      await open({viewport});
      assert.ok(await widest() <= 0, `the page is wider than ${viewport.width}`);
      await context.close();
    }
  });

  test('stands still for who wants that, names its controls, and can be read', async () => {
    await open({reducedMotion: 'reduce'});
    const moving = await page.evaluate(() => [...document.querySelectorAll('*')].filter((element) => {
      const {animationName, transitionDuration} = getComputedStyle(element);
      return animationName !== 'none' || transitionDuration !== '0s';
    }).length);
    assert.equal(moving, 0);

    const nameless = await page.evaluate(() => [...document.querySelectorAll(
        'button, input, select, textarea, [role=listbox], [role=log], canvas[role]')]
        .filter((element) => !(element.getAttribute('aria-label') || element.getAttribute('aria-labelledby') ||
                               element.labels?.length || element.textContent.trim()))
        .map((element) => element.outerHTML));
    assert.deepEqual(nameless, []);
    const names = await page.evaluate(() => [...document.querySelectorAll('button')].map(
        (button) => button.getAttribute('aria-label') ?? button.textContent.trim()));
    assert.deepEqual(names.filter((name, i) => names.indexOf(name) !== i), []);

    const weakest = await page.evaluate(() => {
      const style = getComputedStyle(document.documentElement);
      const luminance = (name) => {
        const [r, g, b] = style.getPropertyValue(name).trim().match(/[0-9a-f]{2}/g)
            .map((part) => parseInt(part, 16) / 255).map((c) => c <= 0.03928 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4);
        return 0.2126 * r + 0.7152 * g + 0.0722 * b;
      };
      const contrast = (a, b) => (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
      const texts = ['--text', '--quiet', '--accent', '--cool', '--good', '--bad'].map(luminance);
      const grounds = ['--night', '--wall', '--panel', '--raised'].map(luminance);
      return Math.min(...texts.flatMap((text) => grounds.map((ground) => contrast(text, ground))));
    });
    assert.ok(weakest >= 4.5, `the weakest contrast is ${weakest.toFixed(2)}`);
  });
});
