// SPDX-License-Identifier: Apache-2.0
/** The page: a television, its remote control, and what goes on inside. @module */

import {Chooser} from './chooser.js';
import {Emp} from './emp.js';
import {buildForms, filterForms} from './forms.js';
import {EventJournal, LogJournal} from './journal.js';
import {byId, make, nameOf, tabs} from './page.js';
import {Player} from './player.js';
import {connectRemote} from './remote.js';
import {LiveScreen} from './screen.js';

const APPLICATION = {applicationId: 'org.example.slideshow', widgetId: 'slideshow.page'};
/** How long a text stands over the picture, in milliseconds. */
const CAPTION_TIME = 2500;
const RETRY_TIME = 2000;
/** Events from before the page was opened. */
const SHOWN_PAST = 50;
/** The error of a client that may only look on. */
const FORBIDDEN = -32003;
/** The transition that the library chooses itself, each time another one. */
const ANY_EFFECT = 36;

const token = new URLSearchParams(location.hash.slice(1)).get('token') ?? '';
const emp = new Emp(`ws://${location.host}/ws?token=${encodeURIComponent(token)}`);
const player = new Player(emp);
const chooser = new Chooser(byId('chooser'));
const events = new EventJournal(byId('events'));
const log = new LogJournal(byId('log'));
const screen = new LiveScreen(byId('screen'), byId('glow'), loadScreen);

async function loadScreen() {
  const response = await fetch('screen.jpg', {cache: 'no-store', headers: {Authorization: `Bearer ${token}`}});
  if (!response.ok) {
    throw new Error(`the screen answers ${response.status}`);
  }
  return response.blob();
}

// What stands over the picture.

let captionTimer = null;

function showCaption(text) {
  clearTimeout(captionTimer);
  byId('caption').textContent = text;
  byId('caption').hidden = false;
  captionTimer = setTimeout(() => {
    byId('caption').hidden = true;
  }, CAPTION_TIME);
}

/** Stands until it is replaced by ''. */
function showNotice(text) {
  byId('notice').textContent = text;
  byId('notice').hidden = text === '';
}

function captionOf(index) {
  return `${index + 1} / ${player.pictures.length}   ${nameOf(player.pictures[index])}`;
}

// The remote control.

function isZoomed() {
  return player.zoom > 1;
}

function mark(step) {
  chooser.mark(chooser.marked + step);
  showCaption(`${captionOf(chooser.marked)}   \u2013 OK shows it`);
}

function togglePlay() {
  return player.playing ? player.pause() : player.play();
}

function goBack() {
  if (isZoomed()) {
    player.setZoom(1);
  } else if (player.playing) {
    player.pause();
  } else if (player.index >= 0) {
    player.stop();
  }
}

const ACTIONS = {
  up: () => isZoomed() ? player.move('up') : mark(-1),
  down: () => isZoomed() ? player.move('down') : mark(1),
  left: () => isZoomed() ? player.move('left') : player.previous(),
  right: () => isZoomed() ? player.move('right') : player.next(),
  ok: () => chooser.marked !== player.index ? player.show(chooser.marked) : togglePlay(),
  back: goBack,
  play: togglePlay,
  stop: () => player.stop(),
  turn: () => player.turn(),
  zoomIn: () => player.setZoom(player.zoom + 1),
  zoomOut: () => player.setZoom(player.zoom - 1),
};

// The player.

let shownIndex = -1;

function onPlayerChange() {
  if (player.index !== shownIndex) {
    shownIndex = player.index;
    chooser.showCurrent(shownIndex);
    if (shownIndex >= 0) {
      chooser.mark(shownIndex);
      showCaption(captionOf(shownIndex));
    }
  }
  const name = nameOf(player.picture);
  byId('screen').setAttribute('aria-label', name ? `The screen shows ${name}` : 'The screen is dark');
  byId('play').querySelector('use').setAttribute('href', player.playing ? '#i-pause' : '#i-play');
  byId('play').querySelector('span').textContent = player.playing ? 'Pause' : 'Play';
  byId('tv').classList.toggle('playing', player.playing);
  offerEffects();
}

function onPlayerFailure({detail: {picture, reason}}) {
  events.addNote(`${nameOf(picture) || 'player'}: ${reason}`, 'bad');
  showCaption(`${nameOf(picture)}   ${reason}`);
}

/** Once they are known, the transitions by name. */
function offerEffects() {
  const select = byId('slideshow').elements.effect;
  if (player.effects.length === 0 || select.options.length > 2) {
    return;
  }
  const options = () => player.effects.map((name, number) => make('option', {value: number}, name));
  select.append(...options());
  byId('known-effects').replaceChildren(...options());
}

function readSlideShow() {
  const {effect, seconds} = byId('slideshow').elements;
  player.effect = effect.value === '' ? null : Number(effect.value);
  if (seconds.validity.valid && seconds.value) {
    player.interval = seconds.valueAsNumber * 1000;
  }
}

function usePictures(paths) {
  player.pictures = paths;
  chooser.fill(paths);
  chooser.showCurrent(player.index);
  byId('empty').hidden = paths.length > 0;
  byId('known-pictures').replaceChildren(...paths.map((path) => make('option', {value: path})));
}

function pathsOf(pictures) {
  return pictures.map(({path}) => path);
}

/** What is no folder is taken for a picture: the engine says whether it is one. */
async function picturesAt(path) {
  try {
    return pathsOf(await emp.call('pictures.inFolder', {folder: path}));
  } catch (error) {
    if (!/is no folder/.test(error.message)) {
      throw error;
    }
    return [path];
  }
}

async function addPictures(event) {
  event.preventDefault();
  const input = byId('add').elements.path;
  const path = input.value;
  input.value = '';
  try {
    usePictures([...new Set([...player.pictures, ...await picturesAt(path)])]);
  } catch (error) {
    events.addNote(error.message, 'bad');
  }
}

// The connection.

const STATES = {closed: 'off', connecting: 'connecting', connected: 'on', lost: 'connection lost, trying again'};

function onStateChange(state) {
  byId('connection').dataset.state = state;
  byId('connection').textContent = STATES[state];
  if (state === 'lost') {
    events.addNote('connection lost', 'bad');
  }
  if (state === 'connected') {
    begin().catch((error) => events.addNote(error.message, 'bad'));
  }
}

async function showFacts() {
  const status = await emp.call('session.status');
  const restarts = status.engineRestarts;
  byId('facts').textContent = `${status.display} \u00b7 engine process ${status.engineProcess}` +
      (restarts > 0 ? `, started again ${restarts === 1 ? 'once' : `${restarts} times`}` : '');
  return status;
}

/** Whether this address does more than let look on. Who may call a method is refused for its parameters only. */
async function hasControl() {
  const error = await emp.call('app.setState', {state: ''}).catch((refusal) => refusal);
  return error.code !== FORBIDDEN;
}

/** What a new connection needs; the television may be another one than before. */
async function begin() {
  if (!byId('forms').hasChildNodes()) {
    buildForms(byId('forms'), await emp.call('rpc.discover'), (method, params) => emp.call(method, params));
  }
  const mayControl = await hasControl();
  document.querySelectorAll('#remote button, .method button, #add button').forEach((button) => {
    button.disabled = !mayControl;
  });
  if (!mayControl) {
    byId('connection').textContent = 'on, to look only';
  }
  const status = await showFacts();
  await emp.call('session.followLog', {on: true});
  await emp.call('session.followScreen', {on: true});
  if (mayControl && !status.application) {
    await emp.call('app.open', APPLICATION);
  }
  if (player.pictures.length === 0) {
    usePictures(pathsOf(await emp.call('pictures.list')));
  }
  screen.refresh();
  if (mayControl && player.index < 0 && player.pictures.length > 0) {
    showCaption(`OK shows ${nameOf(player.pictures[chooser.marked])}, up and down choose`);
  }
}

async function setApplicationState(state) {
  try {
    await emp.setState(state);
    events.addNote(`application: ${state}`);
  } catch (error) {
    events.addNote(error.message, 'bad');
  }
}

function onEngineExit({status, signal, restarted}) {
  const how = signal === undefined ? `ended with status ${status}` : `was ended by signal ${signal}`;
  events.addNote(`the engine ${how}${restarted ? '; another one runs' : ''}`, 'bad');
  showCaption(`The engine ${how}`);
  showFacts().catch(() => {});
  screen.refresh();
}

/** The first connection, again and again until there is one. */
async function start() {
  if (!token) {
    onStateChange('closed');
    showNotice('Open the address that "tvsim serve" prints: it ends with #token=...');
    return;
  }
  try {
    const past = await emp.connect();
    past.slice(-SHOWN_PAST).forEach((event) => events.addEvent(event));
    showNotice('');
  } catch (error) {
    showNotice(`${error.message}. Is "tvsim serve" running? Its newest address has the token.`);
    setTimeout(start, RETRY_TIME);
  }
}

connectRemote(byId('remote'), (key) => ACTIONS[key]());
tabs(document.querySelector('[role=tablist]'));
chooser.addEventListener('choose', () => player.show(chooser.marked));
player.addEventListener('change', onPlayerChange);
player.addEventListener('failure', onPlayerFailure);
emp.onStateChange(onStateChange);
emp.onEvent((event) => events.addEvent(event));
emp.onEngineExit(onEngineExit);
emp.on('engine.log', ({line}) => log.add(line));
emp.on('session.screenChanged', () => screen.refresh());
emp.onMissing((count) => events.addNote(`${count} events were missed`, 'bad'));
emp.on('session.lost', ({count}) => events.addNote(`${count} notifications were lost: this page was too slow`, 'bad'));
byId('remote').addEventListener('click', ({target}) => {
  const state = target.closest('[data-state]')?.dataset.state;
  if (state) {
    setApplicationState(state);
  }
});
byId('slideshow').elements.effect.append(make('option', {value: ANY_EFFECT}, 'varying'));
byId('slideshow').addEventListener('input', readSlideShow);
byId('slideshow').addEventListener('submit', (event) => event.preventDefault());
byId('add').addEventListener('submit', addPictures);
byId('filter').addEventListener('input', ({target}) => filterForms(byId('forms'), target.value));
byId('traces').addEventListener('change', ({target}) => byId('log').classList.toggle('with-traces', target.checked));
addEventListener('hashchange', () => location.reload());
start();
